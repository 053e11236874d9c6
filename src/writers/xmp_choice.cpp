#include "writers/xmp_choice.h"

#include "settings/methods.h"
#include "settings/packet_parser.h"
#include "settings/packet_writer.h"
#include "writers/exif_directories.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace tvmeta {

namespace {

std::span<const unsigned char> bytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

// The part of the caller's packet that would be stored: all but its last byte, which should be a terminator. Without a
// terminator, the packet is stored whole if the method is 0.
struct CallersPacket {
    std::string_view stored;
    bool holdsSettings;
};

CallersPacket examine(std::string_view packet, std::int32_t method) {
    const bool terminated = packet.back() == '\0';
    if (!terminated && method == METHOD_NONE) {
        return {packet, isMethodCode(detectMethod(packet))};
    }
    const std::string_view stored = packet.substr(0, packet.size() - 1);
    return {stored, terminated && isMethodCode(detectMethod(stored))};
}

} // namespace

std::optional<XmpPacket> chooseXmp(std::string_view callersPacket, std::int32_t method, const float* settings,
                                   const MetadataBuf& metadata, std::size_t lensCount) {
    if (!callersPacket.empty()) {
        const CallersPacket examined = examine(callersPacket, method);
        if (examined.holdsSettings || method <= METHOD_NONE) {
            return XmpPacket{std::nullopt, bytesOf(examined.stored)};
        }
    }
    if (method <= METHOD_NONE && lensCount == 0) {
        return XmpPacket{};
    }
    PacketRequest request = packetRequest(method, settings);
    if (lensCount > 0) {
        request.lens = textOf(metadata.lens).substr(0, lensCount);
    }
    ZeroedBuffer packet(measurePacket(request) + 1); // a space ends a packet that was made
    if (!packet) {
        return std::nullopt;
    }
    const std::size_t size = writePacket(request, packet.text());
    std::memset(packet.data() + size, ' ', packet.size() - size);
    const std::span<const unsigned char> bytes = packet.bytes();
    return XmpPacket{std::move(packet), bytes};
}

} // namespace tvmeta
