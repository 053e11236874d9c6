// The image directories of a TIFF structure (TIFF 6.0; XMP storage in files and IPTC-IIM for tags 700 and 33723).
#include "metadata/directory_parsers.h"
#include "support/packed_numbers.h"

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
constexpr std::int32_t TIFF_TYPE_SIZES[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 8};

// What the entries of all directories need.
struct Context {
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

void readModel(const Context& context, const DirectoryEntry& entry) {
    constexpr std::int32_t MinTextCount = 3;
    const std::int32_t itemSize = TIFF_TYPE_SIZES[entry.type < std::size(TIFF_TYPE_SIZES) ? entry.type : 0];
    if (entry.count <= std::int32_t{EntryValueSize} / itemSize) {
        readInlineModel(entry, context.info);
    } else if (entry.count >= MinTextCount) {
        const auto room = std::min(static_cast<std::size_t>(entry.count), sizeof context.info.model);
        context.tiff.readLine(std::span(context.info.model).first(room));
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

void readEntry(const Context& context, const DirectoryEntry& entry, bool isMainImage) {
    context.tiff.seekToValue(entry);
    // A JPEG has its Photoshop resources in a segment, and camera raw files use these tags for other purposes.
    const bool hasPayloads = context.fileType == FILE_TYPE_TIFF;
    switch (entry.tag) {
    case tiff_tag::Model:
        readModel(context, entry);
        break;
    case tiff_tag::Orientation:
        if (entry.type == tiff_type::Short) {
            context.info.orientation = entry.value;
        }
        break;
    case tiff_tag::JpegInterchangeFormat:
        if (!isMainImage) {
            context.info.thumbnailOffset = wrappingAdd(entry.value, context.tiff.base);
        }
        break;
    case tiff_tag::JpegInterchangeFormatLength:
        if (!isMainImage) {
            context.info.thumbnailLength = entry.value;
        }
        break;
    case tiff_tag::Xmp:
        context.info.xmpLength = entry.count;
        context.info.xmpOffset = entry.value;
        break;
    case tiff_tag::Iptc:
        locateIptc(entry, context.info);
        break;
    case tiff_tag::ImageDescription:
        if (hasPayloads) {
            readImageDescription(context.tiff.reader, entry.count, context.budget, context.info);
        }
        break;
    case tiff_tag::Photoshop:
        if (hasPayloads) {
            readPhotoshopResources(context.tiff.reader, entry.count, context.budget, context.info);
        }
        break;
    case tiff_tag::ExifIfd:
        readExifDirectory(context.tiff, context.budget, context.info);
        break;
    case tiff_tag::GpsIfd:
        readGpsDirectory(context.tiff, context.budget, context.info);
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
    const Context context{tiff, fileType, budget, info};
    std::int32_t offset = tiff.read32();
    for (int index = 0; offset != 0 && index < ImageDirectories; ++index) {
        tiff.seek(offset);
        const std::uint16_t count = tiff.read16();
        DirectoryReader directory(tiff, count);
        while (const std::optional<DirectoryEntry> entry = directory.next()) {
            readEntry(context, *entry, index == 0);
        }
        if (count == LastDirectoryEntries) {
            break;
        }
        offset = tiff.read32();
    }
    return GET_EXIF_OK;
}

} // namespace tvmeta
