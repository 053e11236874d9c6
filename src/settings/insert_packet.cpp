// Adds the settings description to an XMP packet in memory, as a sibling of the descriptions that it holds.
#include "settings/packet_writer.h"
#include "settings/xmp_names.h"
#include "support/bytes.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <algorithm>
#include <cstdint>
#include <optional>

using namespace tvmeta;

namespace {

constexpr std::int32_t BadArguments = -1;
constexpr std::int32_t NothingFollows = -1;
constexpr std::int32_t NoMemory = -4;
constexpr std::size_t ShortestTail = 3;

// Finds an opening at `start` or later that ends before the last byte of the packet. If there is none, `failure`
// becomes minus the offset where the search ended, or the nearest that 32 bits can express.
std::optional<std::size_t> findOpening(std::string_view packet, const QuotedText& opening, std::size_t start,
                                       std::int32_t& failure) noexcept {
    const std::string_view searched = packet.substr(0, packet.empty() ? 0 : packet.size() - 1);
    const std::size_t at = findQuoted(searched, opening, start);
    if (at == std::string_view::npos) {
        const auto end = static_cast<std::int64_t>(std::max(packet.size(), start + opening.size()));
        failure = static_cast<std::int32_t>(std::max<std::int64_t>(-end, INT32_MIN));
        return std::nullopt;
    }
    return at;
}

// Between the two line feeds of a blank line behind the opening, as this library writes it; directly behind the opening
// when a line of text follows.
std::size_t insertionPoint(std::string_view packet, std::size_t openingEnd) noexcept {
    if (packet.size() - openingEnd <= 2 || packet[openingEnd + 1] != '\n') {
        return openingEnd;
    }
    return openingEnd + (packet[openingEnd + 2] == '\n' ? 2 : 1);
}

} // namespace

std::int32_t insert_xmp(std::int32_t pass, std::int32_t method, const float* settings, std::int32_t dataLength,
                        std::int32_t shift, char* buffer) noexcept {
    if (method > INT32_MAX - DescriptionOnly) {
        return BadArguments;
    }
    const PacketRequest request{method + DescriptionOnly, settings, {}, std::max(pass, 1)};
    if (!isComplete(request)) {
        return BadArguments;
    }
    if (pass == 0) {
        return static_cast<std::int32_t>(measurePacket(request));
    }
    if (dataLength < 0 || shift < 0 || buffer == nullptr) {
        return BadArguments;
    }
    const std::string_view packet(buffer, static_cast<std::size_t>(dataLength));
    std::int32_t failure = 0;
    const std::optional<std::size_t> xmpmeta = findOpening(packet, XmpmetaOpening, 0, failure);
    if (!xmpmeta) {
        return failure;
    }
    const std::optional<std::size_t> rdf = findOpening(packet, RdfOpening, *xmpmeta + XmpmetaOpening.size(), failure);
    if (!rdf) {
        return failure;
    }
    const std::size_t point = insertionPoint(packet, *rdf + RdfOpening.size());
    const std::string_view tail = textFrom(packet, point);
    if (tail.size() < ShortestTail) {
        return NothingFollows;
    }
    ZeroedBuffer saved(tail.size());
    if (!saved) {
        return NoMemory;
    }
    copyBytes(saved.data(), tail.data(), tail.size());
    const std::size_t written = writePacket(request, buffer + point);
    copyBytes(buffer + point + shift, saved.data(), saved.size());
    return static_cast<std::int32_t>(written);
}
