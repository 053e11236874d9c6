#include "pictures/exif_orientation.h"

#include <cstddef>

namespace {

// Unsigned numbers of a TIFF structure (TIFF 6.0, section 2). Past its end there are zeros.
struct Reader {
    std::span<const unsigned char> bytes;
    bool isBigEndian;

    uint32_t number(size_t offset, size_t size) const {
        uint32_t value = 0;
        for (size_t i = 0; i < size; ++i) {
            const size_t place = offset + (isBigEndian ? i : size - 1 - i);
            value = value << 8 | (place < bytes.size() ? bytes[place] : 0U);
        }
        return value;
    }
};

} // namespace

std::optional<int32_t> exifOrientation(std::span<const unsigned char> structure) {
    constexpr uint32_t OrientationTag = 274;
    constexpr size_t EntrySize = 12;
    const Reader reader = {structure, !structure.empty() && structure[0] == 'M'};
    const size_t directory = reader.number(4, 4);
    const size_t entries = reader.number(directory, 2);
    for (size_t entry = directory + 2; entry < directory + 2 + entries * EntrySize; entry += EntrySize) {
        const uint32_t code = reader.number(entry + 8, 2);
        if (reader.number(entry, 2) == OrientationTag && code >= 1 && code <= 8) {
            return static_cast<int32_t>(code);
        }
    }
    return std::nullopt;
}
