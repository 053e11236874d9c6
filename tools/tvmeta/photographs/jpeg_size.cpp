#include "photographs/jpeg_size.h"

#include <cstddef>

namespace {

// Start-of-frame markers. Between them are those of tables and of arithmetic coding.
bool isFrame(unsigned char marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

int32_t number(std::span<const unsigned char> bytes) {
    return bytes[0] << 8 | bytes[1];
}

} // namespace

std::optional<PixelSize> jpegSize(std::span<const unsigned char> file) {
    constexpr unsigned char StartOfScan = 0xDA;
    constexpr size_t HeaderSize = 4; // marker and length
    constexpr size_t FrameSize = 9;  // up to the width
    if (file.size() < 2 || file[0] != 0xFF || file[1] != 0xD8) {
        return std::nullopt;
    }
    std::optional<PixelSize> size;
    for (auto rest = file.subspan(2); rest.size() >= HeaderSize && rest[0] == 0xFF;) {
        const auto length = static_cast<size_t>(number(rest.subspan(2)));
        if (rest[1] == StartOfScan) {
            return size;
        }
        if (isFrame(rest[1]) && rest.size() >= FrameSize) {
            size = {number(rest.subspan(7)), number(rest.subspan(5))};
        }
        if (length < 2 || length > rest.size() - 2) {
            return std::nullopt;
        }
        rest = rest.subspan(2 + length);
    }
    return std::nullopt;
}
