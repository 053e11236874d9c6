#include "pictures/gain_map.h"

#include "base/numbers.h"
#include "system/files.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace {

using Channel = GainMap::Channel;

// The text of an attribute or element of the packet: <hdrgm:Gamma>2</hdrgm:Gamma> or hdrgm:Gamma="2".
std::string_view propertyOf(std::string_view packet, const std::string& name) {
    const std::string key = "hdrgm:" + name;
    const size_t place = packet.find(key);
    if (place == std::string_view::npos || place + key.size() == packet.size()) {
        return {};
    }
    const std::string_view rest = packet.substr(place + key.size());
    const bool isElement = rest.starts_with('>');
    const size_t first = isElement ? 1 : std::min(rest.find_first_of("\"'"), rest.size() - 1) + 1;
    return rest.substr(first, isElement ? rest.find("</" + key) - 1 : rest.find(rest[first - 1], first) - first);
}

// One number, or three in elements without digits in their names.
std::optional<std::array<double, 3>> channelNumbers(std::string_view text) {
    std::array<double, 3> numbers = {};
    std::ptrdiff_t count = 0;
    while (!text.empty() && count < std::ssize(numbers)) {
        if (const std::optional<double> number = takeNumber(text)) {
            std::ranges::fill(numbers.begin() + count++, numbers.end(), *number);
        } else {
            text.remove_prefix(1);
        }
    }
    return count == 1 || count == 3 ? std::optional(numbers) : std::nullopt;
}

std::optional<GainMap> fromPacket(std::string_view packet) {
    constexpr std::pair<const char*, double Channel::*> Properties[] = {{"GainMapMin", &Channel::minimum},
                                                                        {"GainMapMax", &Channel::maximum},
                                                                        {"Gamma", &Channel::gamma},
                                                                        {"OffsetSDR", &Channel::baseOffset},
                                                                        {"OffsetHDR", &Channel::offset}};
    if (!channelNumbers(propertyOf(packet, "GainMapMax"))) {
        return std::nullopt;
    }
    GainMap map = {.isForStandardRange = propertyOf(packet, "BaseRenditionIsHDR") == "True"};
    for (const auto& [name, member] : Properties) {
        const auto numbers = channelNumbers(propertyOf(packet, name));
        for (size_t i = 0; i < map.channels.size() && numbers; ++i) {
            map.channels[i].*member = (*numbers)[i];
        }
    }
    return map;
}

// Fractions of two big-endian numbers of 32 bits, after 4 bytes of versions and the flags (ISO 21496-1, annex C). The
// first two are the headrooms.
std::optional<GainMap> fromBlock(std::span<const unsigned char> block) {
    constexpr size_t Start = 5, FractionSize = 8, Headrooms = 2, ChannelFractions = 5;
    const size_t channels = block.size() > Start && (block[4] & 0x80) != 0 ? 3 : 1;
    if (block.size() < Start + FractionSize * (Headrooms + ChannelFractions * channels)) {
        return std::nullopt;
    }
    const auto fraction = [&block](size_t index) {
        const auto bytes = block.subspan(Start + FractionSize * index, FractionSize);
        return static_cast<double>(static_cast<int32_t>(bigEndian(bytes.first(4)))) /
               std::max(bigEndian(bytes.last(4)), 1U);
    };
    GainMap map = {.isForStandardRange = fraction(0) > fraction(1)};
    for (size_t i = 0; i < map.channels.size(); ++i) {
        const size_t at = Headrooms + ChannelFractions * (channels == 1 ? 0 : i);
        map.channels[i] = {fraction(at), fraction(at + 1), fraction(at + 2), fraction(at + 3), fraction(at + 4)};
    }
    return map;
}

// The description in the segments of a JPEG.
std::optional<GainMap> describedIn(std::span<const unsigned char> jpeg) {
    constexpr unsigned char App1 = 0xE1, App2 = 0xE2, StartOfScan = 0xDA;
    constexpr std::string_view Block("urn:iso:std:iso:ts:21496:-1\0", 28);
    std::optional<GainMap> map;
    for (jpeg = jpeg.subspan(2); jpeg.size() >= 4 && jpeg[0] == 0xFF && jpeg[1] != StartOfScan;) {
        const size_t length = bigEndian(jpeg.subspan(2, 2));
        if (length < 2 || length > jpeg.size() - 2) {
            break;
        }
        const auto content = jpeg.subspan(4, length - 2);
        if (jpeg[1] == App2 && asText(content).starts_with(Block)) {
            if (const auto found = fromBlock(content.subspan(Block.size()))) {
                return found;
            }
        } else if (jpeg[1] == App1 && !map) {
            map = fromPacket(asText(content));
        }
        jpeg = jpeg.subspan(2 + length);
    }
    return map;
}

bool isUsable(const Channel& channel) {
    constexpr double MaxStops = 100;
    return channel.gamma > 0 && std::isfinite(channel.gamma) && std::isfinite(channel.baseOffset) &&
           std::isfinite(channel.offset) && std::fabs(channel.minimum) <= MaxStops &&
           std::fabs(channel.maximum) <= MaxStops;
}

} // namespace

float GainMap::Channel::apply(float base, float sample) const {
    const double share = gamma == 1 ? double{sample} : std::pow(double{sample}, 1 / gamma);
    return static_cast<float>((double{base} + baseOffset) * std::exp2(minimum + (maximum - minimum) * share) - offset);
}

double GainMap::stops() const {
    return std::round(10 * std::ranges::max(channels, {}, &Channel::maximum).maximum) / 10;
}

std::string GainMap::name() const {
    return fmt::format("gain map, {:+.1f} stops", stops());
}

// The metadata of the first JPEG name the map. The second JPEG is found by its first bytes, which coded pixels cannot
// contain; blocks of metadata can, with previews.
std::optional<GainMap> findGainMap(const std::string& path) {
    constexpr size_t MaxHeader = size_t{1} << 18, MaxPictures = 32;
    constexpr std::string_view Signs[] = {"hdrgm:", "ts:21496:-1", {"MPF\0", 4}};
    constexpr std::string_view JpegStart = "\xFF\xD8\xFF";
    const Bytes header = readStart(path, MaxHeader);
    if (std::ranges::none_of(Signs, [&](auto sign) { return asText(header).find(sign) != sign.npos; })) {
        return std::nullopt;
    }
    const Bytes file = readFile(path);
    const std::string_view text = asText(file);
    size_t place = text.find(JpegStart, 1);
    for (size_t i = 0; i < MaxPictures && place != text.npos; ++i, place = text.find(JpegStart, place + 1)) {
        std::optional<GainMap> map = describedIn(asBytes(text.substr(place, MaxHeader)));
        if (map && std::ranges::all_of(map->channels, isUsable)) {
            map->place = static_cast<long>(place);
            return map;
        }
    }
    return std::nullopt;
}
