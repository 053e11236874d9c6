// Writes EXIF data alone, as a TIFF structure in memory (EXIF 2.3, section 4.5).
#include "tvmeta.h"
#include "writers/directory_builder.h"
#include "writers/exif_directories.h"

#include <algorithm>
#include <cstdint>

using namespace tvmeta;

std::int32_t write_exif_buf(std::int32_t exifCount, std::int32_t exifBytes, std::int32_t gpsCount,
                            std::int32_t gpsBytes, std::int32_t modelCount, std::int32_t makeCount,
                            std::int32_t dateCount, std::int32_t gpsDateCount, std::int32_t orientation,
                            const MetadataBuf* metadata, const GpsBuf* gps, const char* make,
                            unsigned char* buffer) noexcept {
    if (metadata == nullptr || gps == nullptr || make == nullptr || buffer == nullptr ||
        std::max({makeCount, modelCount, exifCount, gpsCount}) <= 0) {
        return WRITE_EXIF_NOTHING;
    }
    const auto countOf = [](std::int32_t count) { return static_cast<std::size_t>(std::max(count, 0)); };
    DirectoryBuilder exif = exifDirectory(*metadata, countOf(dateCount));
    exif.setRoom(countOf(exifCount), countOf(exifBytes));
    DirectoryBuilder place = gpsDirectory(*gps, countOf(gpsDateCount));
    place.setRoom(countOf(gpsCount), countOf(gpsBytes));

    DirectoryBuilder image;
    image.addText(tiff_tag::Make, std::span(make, MakeSize), countOf(makeCount));
    image.addText(tiff_tag::Model, metadata->model, countOf(modelCount));
    image.addShort(tiff_tag::Orientation, writtenOrientation(orientation));
    image.addDirectory(tiff_tag::ExifIfd, exif);
    image.addDirectory(tiff_tag::GpsIfd, place);
    if (image.size() > INT32_MAX - TiffHeaderSize) {
        return WRITE_EXIF_NOTHING;
    }
    const std::span block(buffer, TiffHeaderSize + image.size());
    writeTiffHeader(block.first(TiffHeaderSize), TiffHeaderSize);
    image.write(block.subspan(TiffHeaderSize), TiffHeaderSize);
    return static_cast<std::int32_t>(block.size());
}
