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

// The part of the caller's packet that is stored: all but its last byte, which should be a terminator. Without a
// terminator, the packet is stored whole if the method is 0.
std::string_view storedPart(std::string_view packet, std::int32_t method) {
    const bool isWhole = packet.back() != '\0' && method == METHOD_NONE;
    return isWhole ? packet : packet.substr(0, packet.size() - 1);
}

// Settings are found only in a packet with a terminator.
bool hasTerminatedSettings(std::string_view packet) {
    return packet.back() == '\0' && hasSettings(packet.substr(0, packet.size() - 1));
}

} // namespace

std::optional<XmpPacket> chooseXmp(std::string_view callersPacket, std::int32_t method, const float* settings,
                                   const MetadataBuf& metadata, std::size_t lensCount) {
    if (!callersPacket.empty() && (method <= METHOD_NONE || hasTerminatedSettings(callersPacket))) {
        return XmpPacket{std::nullopt, bytesOf(storedPart(callersPacket, method))};
    }
    if (method <= METHOD_NONE && lensCount == 0) {
        return XmpPacket{};
    }
    PacketRequest request = packetRequest(method, settings);
    if (lensCount > 0) {
        request.lens = textOf(metadata.lens).substr(0, lensCount);
    }
    ZeroedBuffer packet(writePacket(request, nullptr) + 1); // a space ends a packet that was made
    if (!packet) {
        return std::nullopt;
    }
    const std::size_t size = writePacket(request, packet.text());
    std::memset(packet.data() + size, ' ', packet.size() - size);
    const std::span<const unsigned char> bytes = packet.bytes();
    return XmpPacket{std::move(packet), bytes};
}

} // namespace tvmeta
