#include "containers/finders.h"

#include "containers/tag_values.h"
#include "containers/tag_walker.h"
#include "metadata/byte_cursor.h"
#include "support/tiff_vocabulary.h"

#include <algorithm>
#include <array>

namespace tvmeta {

namespace {

// The largest preview, with the metadata of the photograph.
void findInPreview(SourceReader& reader, const Region& file, const Region& preview, Layout& layout) {
    if (preview.size <= 0 || preview.position >= file.end() || preview.size > file.end() - preview.position) {
        layout.markBroken(preview.position);
        return;
    }
    layout.addPiece(TVMETA_PREVIEW, preview);
    findInJpeg(reader, preview, layout);
}

} // namespace

// The header has a name, a version, the model and, at a fixed place, the position and size of the JPEG.
void findInRaf(SourceReader& reader, const Region& file, Layout& layout) {
    constexpr std::int64_t JpegPlace = 84;
    std::array<unsigned char, 8> place{};
    if (!readAt(reader, file.position + JpegPlace, place)) {
        layout.markBroken(file.position);
        return;
    }
    ByteCursor cursor(place);
    const std::int64_t position = cursor.get32();
    findInPreview(reader, file, {file.position + position, cursor.get32()}, layout);
}

// A TIFF structure with tags of the sensor. Older cameras have EXIF only in the preview, so its structure comes second.
void findInRw2(SourceReader& reader, const Region& file, Layout& layout) {
    layout.addStructure(file);
    Layout raw;
    raw.addStructure(file);
    Region preview;
    std::array<std::int32_t, rw2_tag::RightBorder + 1> borders{};
    TagWalker walker(reader, raw);
    for (tvmeta_Tag tag; walker.next(tag);) {
        if (tag.directory != TVMETA_IMAGE || tag.position < 0) {
            continue;
        }
        if (tag.tag == rw2_tag::Jpeg) {
            preview = {tag.position, static_cast<std::int64_t>(tag.count)};
        } else if (tag.tag < borders.size()) {
            borders[tag.tag] = static_cast<std::uint16_t>(readInteger(reader, tag).value_or(0));
        }
    }
    layout.width = std::max(borders[rw2_tag::RightBorder] - borders[rw2_tag::LeftBorder], 0);
    layout.height = std::max(borders[rw2_tag::BottomBorder] - borders[rw2_tag::TopBorder], 0);
    if (preview.size > 0) {
        findInPreview(reader, file, preview, layout);
    }
}

} // namespace tvmeta
