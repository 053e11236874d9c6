#include "writers/pixel_layout.h"

namespace tvmeta {

namespace {

// Values of TifImageInfo::pixelMode and bitsCode.
enum PixelMode : std::int32_t { Unchanged = 0, HighBytes = 1 };
enum BitsCode : std::int32_t { Integer8 = 8, Integer16 = 16, Float32 = 32, Float16 = 3216 };

std::size_t bytesPerSample(std::int32_t bitsCode) {
    switch (bitsCode) {
    case Integer8:
        return 1;
    case Integer16:
    case Float16:
        return 2;
    case Float32:
        return 4;
    default:
        return 0; // unknown
    }
}

bool isSupported(const TifImageInfo& info) {
    const bool dimensions = info.width >= 1 && info.height >= 0 && info.channels >= 1 && info.channels <= 4;
    const bool mode = info.pixelMode == Unchanged || (info.pixelMode == HighBytes && info.bitsCode == Integer8);
    return dimensions && mode && bytesPerSample(info.bitsCode) > 0;
}

} // namespace

std::optional<PixelLayout> pixelLayout(const TifImageInfo& info, std::size_t maxData) {
    if (!isSupported(info)) {
        return std::nullopt;
    }
    const PixelLayout layout = {
        .width = static_cast<std::size_t>(info.width),
        .height = static_cast<std::size_t>(info.height),
        .channels = static_cast<std::size_t>(info.channels),
        .samples = info.channels >= 3 ? 3U : 1U,
        .sampleBytes = bytesPerSample(info.bitsCode),
        .isFloat = info.bitsCode == Float32 || info.bitsCode == Float16,
        .takesHighBytes = info.pixelMode == HighBytes,
    };
    if (layout.height > maxData / layout.rowSize()) { // a row has less than 2^35 bytes
        return std::nullopt;
    }
    return layout;
}

} // namespace tvmeta
