#include "photographs/photo_parts.h"

#include "photographs/jpeg_segments.h"
#include "photographs/psd_resources.h"
#include "photographs/tags.h"
#include "system/system.h"

#include <tvmeta.h>

#include <algorithm>
#include <string_view>

namespace {

using namespace std::string_view_literals;

// The first place in the file that has a part takes precedence.
void takeRegion(Region& part, const Region& found) {
    if (part.length <= 0) {
        part = found;
    }
}

// The IPTC block and the thumbnail of Photoshop resources. Six 32-bit and two 16-bit numbers precede the thumbnail.
void takeResources(std::FILE* file, const Region& resources, PhotoParts& parts) {
    constexpr int64_t ThumbnailHeader = 28;
    takeRegion(parts.iptc, findResource(file, resources, PsdResource::Iptc));
    const Region thumbnail = findResource(file, resources, PsdResource::Thumbnail);
    if (thumbnail.length > ThumbnailHeader) {
        takeRegion(parts.thumbnail, {thumbnail.offset + ThumbnailHeader, thumbnail.length - ThumbnailHeader});
    }
}

bool isFullPicture(const TiffDirectory& directory) {
    constexpr uint32_t Reduced = 1; // NewSubfileType
    return (directory.value(tag::NewSubfileType).value_or(0) & Reduced) == 0 && directory.find(tag::ImageWidth);
}

// The first directory. In raw files, whose first directory is a preview: its first child with a full-size picture.
TiffDirectory fullPicture(const TiffStructure& tiff, const TiffDirectory& first) {
    constexpr uint32_t MaxChildren = 16;
    const TiffEntry* children = first.find(tag::SubIfds);
    if (isFullPicture(first) || children == nullptr) {
        return first;
    }
    const Region offsets = tiff.region(*children);
    for (uint32_t i = 0; i < std::min(children->count, MaxChildren); ++i) {
        seekTo(tiff.file, offsets.offset + 4 * int64_t{i});
        const auto offset = static_cast<uint32_t>(fgetmi4(tiff.file, tiff.order));
        if (TiffDirectory child = tiff.directory(offset); isFullPicture(child)) {
            return child;
        }
    }
    return first;
}

Region regionOf(const TiffStructure& tiff, const TiffDirectory& directory, int32_t tag) {
    const TiffEntry* entry = directory.find(tag);
    return entry == nullptr ? Region() : tiff.region(*entry);
}

void takeTiff(std::FILE* file, int64_t base, PhotoParts& parts) {
    const std::optional<TiffStructure> tiff = TiffStructure::find(file, base);
    if (!tiff) {
        return;
    }
    parts.image = tiff->directory(tiff->firstDirectory);
    parts.camera = tiff->directory(parts.image.value(tag::ExifDirectory).value_or(0));
    parts.gps = tiff->directory(parts.image.value(tag::GpsDirectory).value_or(0));
    takeRegion(parts.xmp, regionOf(*tiff, parts.image, tag::Xmp));
    takeRegion(parts.iptc, regionOf(*tiff, parts.image, tag::Iptc));
    takeResources(file, regionOf(*tiff, parts.image, tag::PhotoshopResources), parts);
    const TiffDirectory thumbnail = tiff->directory(parts.image.next);
    if (const auto offset = thumbnail.value(tag::ThumbnailOffset)) {
        takeRegion(parts.thumbnail, {base + *offset, int64_t{thumbnail.value(tag::ThumbnailLength).value_or(0)}});
    }
}

// ITU-T T.81, table B.1: the frame headers, without the tables between their numbers.
bool isFrameHeader(int marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

void takeJpeg(std::FILE* file, PhotoParts& parts) {
    for (const JpegSegment& segment : readJpegSegments(file)) {
        if (isFrameHeader(segment.marker)) {
            seekTo(file, segment.data.offset + 1); // after the precision
            parts.height = fgetm2(file) & 0xFFFF;
            parts.width = fgetm2(file) & 0xFFFF;
        }
        takeRegion(parts.exif, afterIdentifier(file, segment, App1, "Exif\0\0"sv));
        takeRegion(parts.xmp, afterIdentifier(file, segment, App1, "http://ns.adobe.com/xap/1.0/\0"sv));
        parts.hasExtendedXmp |=
            afterIdentifier(file, segment, App1, "http://ns.adobe.com/xmp/extension/\0"sv).length > 0;
        const Region resources = afterIdentifier(file, segment, App13, "Photoshop 3.0\0"sv);
        if (resources.length > 0) {
            takeResources(file, resources, parts);
        }
    }
}

void takePsd(std::FILE* file, PhotoParts& parts) {
    const PsdHeader header = readPsdHeader(file);
    parts.width = header.width;
    parts.height = header.height;
    parts.exif = findResource(file, header.resources, PsdResource::Exif);
    parts.xmp = findResource(file, header.resources, PsdResource::Xmp);
    takeResources(file, header.resources, parts);
}

} // namespace

PhotoParts findParts(std::FILE* file, int32_t fileType) {
    PhotoParts parts;
    if (fileType == FILE_TYPE_TIFF) {
        takeTiff(file, 0, parts);
        if (const auto tiff = TiffStructure::find(file, 0)) {
            const TiffDirectory picture = fullPicture(*tiff, parts.image);
            parts.width = picture.value(tag::ImageWidth).value_or(0);
            parts.height = picture.value(tag::ImageLength).value_or(0);
        }
        return parts;
    }
    fileType == FILE_TYPE_JPEG ? takeJpeg(file, parts) : takePsd(file, parts);
    if (parts.exif.length > 0) {
        takeTiff(file, parts.exif.offset, parts);
    }
    return parts;
}
