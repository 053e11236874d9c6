// The image directories of a TIFF structure (TIFF 6.0; XMP storage in files and IPTC-IIM for tags 700 and 33723).
#include "metadata/exif_info.h"
#include "metadata/status.h"
#include "support/bytes.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace tvmeta {

namespace {

// Image, thumbnail, and the one that the thumbnail's links to: no photograph has more that matter here.
constexpr int ImageDirectories = 3;

// A directory of so many entries is taken for the last one.
constexpr std::uint16_t LastDirectoryEntries = 255;

// Byte sizes of the field types, indexed by type code; types beyond count as type 0.
constexpr std::string_view TIFF_TYPE_SIZES = "11124811248488";

int typeSize(std::uint16_t type) noexcept {
    return TIFF_TYPE_SIZES[type < TIFF_TYPE_SIZES.size() ? type : 0] - '0';
}

struct Walk {
    TiffStructure tiff;
    std::int32_t fileType;
    WorkBudget& budget;
    ExifInfo& info;
};

// A model name that stands in the entry fills four characters: what its count does not cover becomes blanks.
void readInlineModel(const DirectoryEntry& entry, ExifInfo& info) noexcept {
    std::ranges::copy(entry.fieldBytes, info.model);
    if (entry.count == 3) {
        info.model[2] = ' ';
    }
    if (entry.count == 3 || entry.count == 4) {
        info.model[3] = ' ';
        info.model[4] = '\0';
    }
}

void readModel(const Walk& walk, const DirectoryEntry& entry) noexcept {
    constexpr std::int32_t ShortestText = 3;
    if (std::int64_t{typeSize(entry.type)} * entry.count <= static_cast<std::int64_t>(EntryValueSize)) {
        readInlineModel(entry, walk.info);
    } else if (entry.count >= ShortestText) {
        const auto room = std::min(static_cast<std::size_t>(entry.count), sizeof walk.info.model);
        walk.tiff.reader.readLine(std::span(walk.info.model).first(room));
    }
}

void locateIptc(const DirectoryEntry& entry, ExifInfo& info) noexcept {
    if (entry.type == tiff_type::Undefined) {
        info.iptcLength = entry.count;
    } else if (entry.type == tiff_type::Long) {
        info.iptcLength = static_cast<std::int32_t>(4U * static_cast<std::uint32_t>(entry.count));
    }
    info.iptcOffset = entry.value;
}

void locateThumbnail(const Walk& walk, const DirectoryEntry& entry) noexcept {
    if (entry.tag == tiff_tag::JpegInterchangeFormat) {
        walk.info.thumbnailOffset = wrappingAdd(entry.value, walk.tiff.base);
    } else {
        walk.info.thumbnailLength = entry.value;
    }
}

// Descriptions and Photoshop resources are looked into in TIFF files alone: a JPEG has its resources in a segment, and
// cameras' raw files use these tags for other things.
void readPayload(const Walk& walk, const DirectoryEntry& entry) noexcept {
    if (walk.fileType != FILE_TYPE_TIFF) {
        return;
    }
    if (entry.tag == tiff_tag::ImageDescription) {
        readImageDescription(walk.tiff.reader, entry.count, walk.budget, walk.info);
    } else {
        readPhotoshopResources(walk.tiff.reader, entry.count, walk.budget, walk.info);
    }
}

void readEntry(const Walk& walk, const DirectoryEntry& entry, bool mainImage) noexcept {
    walk.tiff.seekToValue(entry);
    switch (entry.tag) {
    case tiff_tag::Model:
        readModel(walk, entry);
        break;
    case tiff_tag::Orientation:
        if (entry.type == tiff_type::Short) {
            walk.info.orientation = entry.value;
        }
        break;
    case tiff_tag::JpegInterchangeFormat:
    case tiff_tag::JpegInterchangeFormatLength:
        if (!mainImage) {
            locateThumbnail(walk, entry);
        }
        break;
    case tiff_tag::Xmp:
        walk.info.xmpLength = entry.count;
        walk.info.xmpOffset = entry.value;
        break;
    case tiff_tag::Iptc:
        locateIptc(entry, walk.info);
        break;
    case tiff_tag::ImageDescription:
    case tiff_tag::Photoshop:
        readPayload(walk, entry);
        break;
    case tiff_tag::ExifIfd:
        readExifDirectory(walk.tiff, walk.budget, walk.info);
        break;
    case tiff_tag::GpsIfd:
        readGpsDirectory(walk.tiff, walk.budget, walk.info);
        break;
    default:
        break;
    }
}

} // namespace

std::int32_t readImageDirectories(StreamReader& reader, std::int32_t tiffBase, std::int32_t fileType,
                                  WorkBudget& budget, ExifInfo& info) noexcept {
    const std::uint16_t mark = reader.read16(ByteOrder::Big);
    if (mark != LittleEndianMark && mark != BigEndianMark) {
        return status::WrongSignature;
    }
    const TiffStructure tiff{reader, byteOrderOf(mark), tiffBase};
    if (tiff.read16() != TiffMagic) {
        return status::Unsupported;
    }
    const Walk walk{tiff, fileType, budget, info};
    std::int32_t offset = tiff.read32();
    for (int index = 0; offset != 0 && index < ImageDirectories; ++index) {
        tiff.seek(offset);
        const std::uint16_t count = tiff.read16();
        DirectoryReader directory(tiff, count);
        for (DirectoryEntry entry; directory.next(entry);) {
            readEntry(walk, entry, index == 0);
        }
        if (count == LastDirectoryEntries) {
            break;
        }
        offset = tiff.read32();
    }
    return status::Done;
}

} // namespace tvmeta
