// CR3: a box of the camera maker in 'moov' has the image, EXIF and GPS directories, each as a TIFF structure of its
// own.
#include "containers/boxes.h"
#include "containers/finders.h"
#include "metadata/byte_cursor.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tvmeta {

namespace {

using Uuid = std::array<unsigned char, 16>;
constexpr Uuid MetadataUuid = {0x85, 0xC0, 0xB6, 0x87, 0x82, 0x0F, 0x11, 0xE0,
                               0x81, 0x11, 0xF4, 0xCE, 0x46, 0x2B, 0x6A, 0x48};
constexpr Uuid PreviewUuid = {0xEA, 0xF4, 0x2B, 0x5E, 0x1C, 0x98, 0x4B, 0x88,
                              0xB9, 0xFB, 0xB7, 0xDC, 0x40, 0x6E, 0x4D, 0x16};
constexpr Uuid XmpUuid = {0xBE, 0x7A, 0xCF, 0xCB, 0x97, 0xA9, 0x42, 0xE8,
                          0x9C, 0x71, 0x99, 0x94, 0x91, 0xE3, 0xAF, 0xAC};

// The content of a 'uuid' box after its identifier.
std::optional<Region> contentOf(SourceReader& reader, const Box& box, const Uuid& wanted) {
    Uuid uuid{};
    if (box.type != boxType("uuid") || box.content.size < std::int64_t{uuid.size()} ||
        !readAt(reader, box.content.position, uuid) || uuid != wanted) {
        return std::nullopt;
    }
    return box.content.after(std::int64_t{uuid.size()});
}

void readMetadata(SourceReader& reader, const Region& region, Layout& layout) {
    BoxWalker boxes(reader, region, layout);
    for (Box box; boxes.next(box);) {
        switch (box.type) {
        case boxType("CMT1"):
            layout.addStructure(box.content);
            break;
        case boxType("CMT2"):
            layout.addStructure(box.content, TVMETA_EXIF_DIRECTORY);
            break;
        case boxType("CMT3"):
            layout.hasMakerNote = true;
            break;
        case boxType("CMT4"):
            layout.addStructure(box.content, TVMETA_GPS_DIRECTORY);
            break;
        case boxType("THMB"):
            layout.offerLarger(TVMETA_THUMBNAIL, findJpegIn(reader, box.content));
            break;
        default:
            break;
        }
    }
}

// A number in a box, after the version and the flags.
std::int64_t numberAt(SourceReader& reader, const Region& box, std::int64_t offset, std::size_t size) {
    std::array<unsigned char, 8> bytes{};
    const auto number = std::span(bytes).first(size);
    return box.size >= offset + static_cast<std::int64_t>(size) && readAt(reader, box.position + offset, number)
               ? static_cast<std::int64_t>(std::min<std::uint64_t>(ByteCursor(number).number(size), INT64_MAX))
               : 0;
}

// The first sample of a track, if it is a JPEG: the first track is a preview of full size.
void readTrack(SourceReader& reader, Region region, const Region& file, Layout& layout) {
    for (const std::uint32_t type : {boxType("mdia"), boxType("minf"), boxType("stbl")}) {
        region = findBox(reader, region, type, layout);
    }
    const std::int64_t size = numberAt(reader, findBox(reader, region, boxType("stsz"), layout), 4, 4);
    const std::int64_t position = numberAt(reader, findBox(reader, region, boxType("co64"), layout), 8, 8);
    std::array<unsigned char, 2> start{};
    if (position > 0 && position < file.end() && size <= file.end() - position && readAt(reader, position, start) &&
        start[0] == 0xFF && start[1] == 0xD8) {
        layout.offerLarger(TVMETA_PREVIEW, {position, size});
    }
}

void readMovie(SourceReader& reader, const Region& region, const Region& file, Layout& layout) {
    BoxWalker boxes(reader, region, layout);
    for (Box box; boxes.next(box);) {
        if (const auto metadata = contentOf(reader, box, MetadataUuid)) {
            readMetadata(reader, *metadata, layout);
        } else if (box.type == boxType("trak")) {
            readTrack(reader, box.content, file, layout);
        }
    }
}

} // namespace

void findInCr3(SourceReader& reader, const Region& file, Layout& layout) {
    constexpr std::int64_t PreviewHeader = 8;
    BoxWalker boxes(reader, file, layout);
    bool hasMovie = false;
    for (Box box; boxes.next(box);) {
        if (box.type == boxType("moov")) {
            hasMovie = true;
            readMovie(reader, box.content, file, layout);
        } else if (const auto packet = contentOf(reader, box, XmpUuid)) {
            layout.addFirst(TVMETA_XMP, *packet);
        } else if (const auto preview = contentOf(reader, box, PreviewUuid)) {
            const Region jpeg = findBox(reader, preview->after(PreviewHeader), boxType("PRVW"), layout);
            layout.offerLarger(TVMETA_PREVIEW, findJpegIn(reader, jpeg));
        }
    }
    if (!hasMovie) {
        layout.markBroken(file.position);
    }
}

} // namespace tvmeta
