// Containers: files of boxes (ISO/IEC 14496-12).
#pragma once

#include "containers/layout.h"

#include <cstdint>

namespace tvmeta {

// The four letters of a type as a big-endian number.
consteval std::uint32_t boxType(const char (&letters)[5]) {
    std::uint32_t type = 0;
    for (int i = 0; i < 4; ++i) {
        type = type << 8 | static_cast<unsigned char>(letters[i]);
    }
    return type;
}

struct Box {
    std::uint32_t type = 0;
    Region content; // as far as the region of the walker goes
    bool isCut = false;
};

// Returns the boxes in a region one by one.
class BoxWalker {
  public:
    BoxWalker(SourceReader& reader, const Region& region, Layout& layout)
        : reader_(reader), position_(region.position), end_(region.end()), layout_(layout) {}

    // Returns false after the last box. A size that is too small for a box marks the layout as broken.
    bool next(Box& box);

  private:
    static constexpr int MaxBoxes = 1 << 14;

    SourceReader& reader_;
    std::int64_t position_;
    std::int64_t end_;
    Layout& layout_;
    int boxesLeft_ = MaxBoxes;
};

// The first box of a type in a region; of size 0 if there is none.
Region findBox(SourceReader& reader, const Region& region, std::uint32_t type, Layout& layout);

// Adds the EXIF block of a box or an item, which starts with the offset of the TIFF header after this number.
void addExifBox(SourceReader& reader, const Region& content, Layout& layout);

// The JPEG stream that starts among the first bytes of a region, after numbers that depend on a version; empty if there
// is none.
Region findJpegIn(SourceReader& reader, const Region& region);

} // namespace tvmeta
