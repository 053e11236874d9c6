// Inserts the settings description into an XMP packet in memory, as a sibling of the descriptions in the packet.
#include "settings/packet_writer.h"
#include "settings/xmp_names.h"
#include "support/packed_numbers.h"
#include "support/result.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <algorithm>
#include <cstdint>

using namespace tvmeta;

namespace {

constexpr std::size_t MinTail = 3;

// Finds an opening at `start` or later that ends before the last byte of the packet, and returns the offset after it. A
// failure is minus the size of the packet, or minus the smallest size that could contain the opening if that is more.
Result<std::size_t> findOpeningEnd(std::string_view packet, const QuotedText& opening, std::size_t start) {
    const std::string_view searched = packet.substr(0, packet.empty() ? 0 : packet.size() - 1);
    const std::size_t at = findQuoted(searched, opening, start);
    if (at == NotFound) {
        const auto end = static_cast<std::int64_t>(std::max(packet.size(), start + opening.size()));
        return Failure{static_cast<std::int32_t>(std::max<std::int64_t>(-end, INT32_MIN))};
    }
    return at + opening.size();
}

// Where the description goes. If the second byte after the opening is a line feed, as in the packets of this library:
// before it, or after it if a third line feed follows. Otherwise directly after the opening.
std::size_t insertionPoint(std::string_view packet, std::size_t openingEnd) {
    if (packet.size() - openingEnd <= 2 || packet[openingEnd + 1] != '\n') {
        return openingEnd;
    }
    return openingEnd + (packet[openingEnd + 2] == '\n' ? 2 : 1);
}

} // namespace

std::int32_t insert_xmp(std::int32_t pass, std::int32_t method, const float* settings, std::int32_t dataLength,
                        std::int32_t shift, char* buffer) noexcept {
    if (method > INT32_MAX - DescriptionOnly) {
        return INSERT_XMP_BAD_ARGUMENTS;
    }
    PacketRequest request = packetRequest(method + DescriptionOnly, settings);
    request.namespaceNumber = std::max(pass, 1);
    if (!hasNeededSettings(request)) {
        return INSERT_XMP_BAD_ARGUMENTS;
    }
    if (pass == 0) {
        return static_cast<std::int32_t>(writePacket(request, nullptr));
    }
    if (dataLength < 0 || shift < 0 || buffer == nullptr) {
        return INSERT_XMP_BAD_ARGUMENTS;
    }
    const std::string_view packet(buffer, static_cast<std::size_t>(dataLength));
    const Result<std::size_t> xmpmetaEnd = findOpeningEnd(packet, XmpmetaOpening, 0);
    if (!xmpmetaEnd) {
        return xmpmetaEnd.code();
    }
    const Result<std::size_t> rdfEnd = findOpeningEnd(packet, RdfOpening, *xmpmetaEnd);
    if (!rdfEnd) {
        return rdfEnd.code();
    }
    const std::size_t point = insertionPoint(packet, *rdfEnd);
    const std::string_view tail = textFrom(packet, point);
    if (tail.size() < MinTail) {
        return INSERT_XMP_NOTHING_FOLLOWS;
    }
    ZeroedBuffer saved(tail.size());
    if (!saved) {
        return INSERT_XMP_NO_MEMORY;
    }
    copyBytes(saved.data(), tail.data(), tail.size());
    const std::size_t written = writePacket(request, buffer + point);
    copyBytes(buffer + point + shift, saved.data(), saved.size());
    return static_cast<std::int32_t>(written);
}
