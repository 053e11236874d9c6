// EXIF data alone, as a TIFF structure in memory (EXIF 2.3, section 4.5).
#include "support/bytes.h"
#include "tvmeta.h"
#include "writers/exif_directories.h"

#include <cstdint>

using namespace tvmeta;

namespace {

constexpr std::size_t atLeastZero(std::int32_t count) noexcept {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

} // namespace

std::int32_t write_exif_buf(std::int32_t exifCount, std::int32_t exifBytes, std::int32_t gpsCount,
                            std::int32_t gpsBytes, std::int32_t modelCount, std::int32_t makeCount,
                            std::int32_t dateCount, std::int32_t gpsDateCount, std::int32_t orientation,
                            const MetadataBuf* metadata, const GpsBuf* gps, const char* make,
                            unsigned char* buffer) noexcept {
    constexpr std::int32_t NothingToDescribe = -1;
    if (metadata == nullptr || gps == nullptr || make == nullptr || buffer == nullptr) {
        return NothingToDescribe;
    }
    Directory exif = exifDirectory(*metadata, atLeastZero(dateCount));
    exif.fixLayout(atLeastZero(exifCount), atLeastZero(exifBytes));
    Directory position = gpsDirectory(*gps, atLeastZero(gpsDateCount));
    position.fixLayout(atLeastZero(gpsCount), atLeastZero(gpsBytes));

    Directory image;
    if (makeCount > 0) {
        image.addText(tiff_tag::Make, std::span(make, MakeSize), atLeastZero(makeCount));
    }
    if (modelCount > 0) {
        image.addText(tiff_tag::Model, metadata->model, atLeastZero(modelCount));
    }
    if (exifCount > 0) {
        image.addDirectory(tiff_tag::ExifIfd, exif);
    }
    if (gpsCount > 0) {
        image.addDirectory(tiff_tag::GpsIfd, position);
    }
    const std::size_t size = TiffHeaderSize + DirectoryEntrySize + image.size(); // one entry more for the orientation
    if (image.entries() == 0 || size > INT32_MAX) {
        return NothingToDescribe;
    }
    image.addShort(tiff_tag::Orientation, writtenOrientation(orientation));
    writeTiffHeader(std::span(buffer, TiffHeaderSize).first<TiffHeaderSize>(), TiffHeaderSize);
    image.write(std::span(buffer, size).subspan(TiffHeaderSize), TiffHeaderSize);
    return static_cast<std::int32_t>(size);
}
