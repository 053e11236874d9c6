// The image directories of a TIFF structure (TIFF 6.0; XMP storage in files and IPTC-IIM for tags 700 and 33723).
#include "metadata/directory_parsers.h"
#include "support/bytes.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace tvmeta {

namespace {

// The image, the thumbnail, and one more. Photographs have nothing of interest in further ones.
constexpr int ImageDirectories = 3;

// A directory with this many entries is treated as the last one.
constexpr std::uint16_t LastDirectoryEntries = 255;

// Byte sizes of the field types, by type code. Unknown types count as type 0.
constexpr std::uint8_t TIFF_TYPE_SIZES[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 8};

std::int32_t typeSize(std::uint16_t type) {
    return TIFF_TYPE_SIZES[type < std::size(TIFF_TYPE_SIZES) ? type : 0];
}

struct Walk {
    TiffReader tiff;
    std::int32_t fileType;
    WorkBudget& budget;
    ExifInfo& info;
};

// A model name in the value field has four characters. Those beyond its count become spaces.
void readInlineModel(const DirectoryEntry& entry, ExifInfo& info) {
    std::ranges::copy(entry.fieldBytes, info.model);
    if (entry.count == 3) {
        info.model[2] = ' ';
    }
    if (entry.count == 3 || entry.count == 4) {
        info.model[3] = ' ';
        info.model[4] = '\0';
    }
}

void readModel(const Walk& walk, const DirectoryEntry& entry) {
    constexpr std::int32_t MinTextCount = 3;
    if (entry.count <= static_cast<std::int32_t>(EntryValueSize) / typeSize(entry.type)) {
        readInlineModel(entry, walk.info);
    } else if (entry.count >= MinTextCount) {
        const auto room = std::min(static_cast<std::size_t>(entry.count), sizeof walk.info.model);
        walk.tiff.readLine(std::span(walk.info.model).first(room));
    }
}

void locateIptc(const DirectoryEntry& entry, ExifInfo& info) {
    if (entry.type == tiff_type::Undefined) {
        info.iptcLength = entry.count;
    } else if (entry.type == tiff_type::Long) {
        info.iptcLength = static_cast<std::int32_t>(4U * static_cast<std::uint32_t>(entry.count));
    }
    info.iptcOffset = entry.value;
}

void locateThumbnail(const Walk& walk, const DirectoryEntry& entry) {
    if (entry.tag == tiff_tag::JpegInterchangeFormat) {
        walk.info.thumbnailOffset = wrappingAdd(entry.value, walk.tiff.base);
    } else {
        walk.info.thumbnailLength = entry.value;
    }
}

// Descriptions and Photoshop resources are read in TIFF files only. A JPEG has its resources in a segment, and camera
// raw files use these tags for other purposes.
void readPayload(const Walk& walk, const DirectoryEntry& entry) {
    if (walk.fileType != FILE_TYPE_TIFF) {
        return;
    }
    if (entry.tag == tiff_tag::ImageDescription) {
        readImageDescription(walk.tiff.reader, entry.count, walk.budget, walk.info);
    } else {
        readPhotoshopResources(walk.tiff.reader, entry.count, walk.budget, walk.info);
    }
}

void readEntry(const Walk& walk, const DirectoryEntry& entry, bool isMainImage) {
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
        if (!isMainImage) {
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
                                  WorkBudget& budget, ExifInfo& info) {
    const std::uint16_t mark = reader.read16(ByteOrder::Big);
    if (mark != LittleEndianMark && mark != BigEndianMark) {
        return GET_EXIF_WRONG_SIGNATURE;
    }
    const TiffReader tiff{reader, byteOrderOf(mark), tiffBase};
    if (tiff.read16() != TiffMagic) {
        return GET_EXIF_UNSUPPORTED;
    }
    const Walk walk{tiff, fileType, budget, info};
    std::int32_t offset = tiff.read32();
    for (int index = 0; offset != 0 && index < ImageDirectories; ++index) {
        tiff.seek(offset);
        const std::uint16_t count = tiff.read16();
        DirectoryReader directory(tiff, count);
        while (const std::optional<DirectoryEntry> entry = directory.next()) {
            readEntry(walk, *entry, index == 0);
        }
        if (count == LastDirectoryEntries) {
            break;
        }
        offset = tiff.read32();
    }
    return GET_EXIF_OK;
}

} // namespace tvmeta
