#include "writers/tiff_image.h"

namespace tvmeta {

namespace {

std::size_t bytesPerSample(std::int32_t bitsCode) {
    switch (bitsCode) {
    case bits_code::Integer8:
        return 1;
    case bits_code::Integer16:
    case bits_code::Float16:
        return 2;
    case bits_code::Float32:
        return 4;
    default:
        return 0; // unknown
    }
}

bool isSupported(const TifImageInfo& info) {
    const bool dimensions = info.width >= 1 && info.height >= 0 && info.channels >= 1 && info.channels <= 4;
    const bool mode = info.pixelMode == pixel_mode::Unchanged ||
                      (info.pixelMode == pixel_mode::HighBytes && info.bitsCode == bits_code::Integer8);
    return dimensions && mode && bytesPerSample(info.bitsCode) > 0;
}

} // namespace

TiffImage::TiffImage(const TifImageInfo& info)
    : width(static_cast<std::size_t>(info.width)), height(static_cast<std::size_t>(info.height)),
      channels(static_cast<std::size_t>(info.channels)), samples(channels >= 3 ? 3 : 1),
      sampleBytes(bytesPerSample(info.bitsCode)),
      isFloat(info.bitsCode == bits_code::Float32 || info.bitsCode == bits_code::Float16),
      takesHighBytes(info.pixelMode == pixel_mode::HighBytes) {}

std::optional<TiffImage> TiffImage::from(const TifImageInfo& info) {
    if (!isSupported(info)) {
        return std::nullopt;
    }
    const TiffImage image(info);
    if (image.height > MaxImageData / image.rowSize()) { // a row has less than 2^35 bytes
        return std::nullopt;
    }
    return image;
}

} // namespace tvmeta
