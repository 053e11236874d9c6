// JPEG XL: boxes with the codestream, EXIF and XMP, or the codestream alone.
#include "containers/boxes.h"
#include "containers/finders.h"
#include "metadata/byte_cursor.h"

#include <array>
#include <cstdint>
#include <span>

namespace tvmeta {

namespace {

// Numbers of some bits, from the lowest on (ISO/IEC 18181-1, annex B).
class BitReader {
  public:
    explicit BitReader(std::span<const unsigned char> bytes) : bytes_(bytes) {}

    std::uint32_t get(unsigned bits) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < bits; ++i, ++position_) {
            const std::size_t byte = position_ / 8;
            const unsigned bit = byte < bytes_.size() ? bytes_[byte] >> position_ % 8 & 1U : 0U;
            value |= bit << i;
        }
        return value;
    }

    bool isComplete() const { return position_ <= bytes_.size() * 8; }

  private:
    std::span<const unsigned char> bytes_;
    std::size_t position_ = 0;
};

std::int64_t getSize(BitReader& bits, bool isSmall) {
    constexpr unsigned Widths[] = {9, 13, 18, 30};
    return isSmall ? (std::int64_t{bits.get(5)} + 1) * 8 : std::int64_t{bits.get(Widths[bits.get(2)])} + 1;
}

// The size header, and the orientation at the start of the image metadata.
void readCodestream(SourceReader& reader, const Region& region, Layout& layout) {
    struct Ratio {
        int width;
        int height;
    };
    constexpr Ratio Ratios[] = {{0, 0}, {1, 1}, {12, 10}, {4, 3}, {3, 2}, {16, 9}, {5, 4}, {2, 1}};
    std::array<unsigned char, 16> bytes{};
    BitReader bits(readStart(reader, region, bytes));
    bits.get(16); // signature
    const bool isSmall = bits.get(1) != 0;
    const std::int64_t height = getSize(bits, isSmall);
    const std::uint32_t ratio = bits.get(3);
    const std::int64_t width =
        ratio == 0 ? getSize(bits, isSmall) : height * Ratios[ratio].width / Ratios[ratio].height;
    const bool isDefault = bits.get(1) != 0;
    const bool hasOrientation = !isDefault && bits.get(1) != 0;
    const std::uint32_t orientation = hasOrientation ? bits.get(3) + 1 : 1;
    if (bits.isComplete() && width <= INT32_MAX) {
        layout.width = static_cast<std::int32_t>(width);
        layout.height = static_cast<std::int32_t>(height);
        layout.orientation = static_cast<std::int32_t>(orientation); // readers do not turn the picture by EXIF
    }
}

// A box that is compressed with Brotli starts with its type.
void noteCompressed(SourceReader& reader, const Region& box, Layout& layout) {
    std::array<unsigned char, 4> bytes{};
    const std::uint32_t type = readAt(reader, box.position, bytes) ? ByteCursor(bytes).get32() : 0;
    if (type == boxType("Exif")) {
        layout.addCompressed(TVMETA_EXIF, box);
    } else if (type == boxType("xml ")) {
        layout.addCompressed(TVMETA_XMP, box);
    }
}

} // namespace

void findInJxl(SourceReader& reader, const Region& file, Layout& layout) {
    std::array<unsigned char, 1> first{};
    if (readAt(reader, file.position, first) && first[0] == 0xFF) {
        return readCodestream(reader, file, layout);
    }
    BoxWalker boxes(reader, file, layout);
    for (Box box; boxes.next(box);) {
        switch (box.type) {
        case boxType("jxlc"):
            readCodestream(reader, box.content, layout);
            break;
        case boxType("jxlp"): // parts, of which each starts with its number
            if (layout.width == 0) {
                readCodestream(reader, box.content.after(4), layout);
            }
            break;
        case boxType("Exif"):
            addExifBox(reader, box.content, layout);
            break;
        case boxType("xml "):
            layout.addFirst(TVMETA_XMP, box.content);
            break;
        case boxType("brob"):
            noteCompressed(reader, box.content, layout);
            break;
        default:
            break;
        }
    }
}

} // namespace tvmeta
