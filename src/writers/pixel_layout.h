// Writers: the pixels of a TIFF result, as the caller describes them and as they are written (TIFF 6.0).
#pragma once

#include "support/tiff_vocabulary.h"
#include "tvmeta.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tvmeta {

// Positions in a result are signed 32-bit numbers.
inline constexpr std::size_t MaxFileSize = INT32_MAX;
inline constexpr std::size_t MaxImageData = MaxFileSize - TiffHeaderSize;

struct PixelLayout {
    std::size_t width;
    std::size_t height;
    std::size_t channels; // of a source pixel
    std::size_t samples;  // of a written pixel, which has no alpha channel
    std::size_t sampleBytes;
    bool isFloat;
    bool takesHighBytes; // source samples have 16 bits, written ones 8

    std::size_t rowSize() const { return width * samples * sampleBytes; }
    std::size_t dataSize() const { return height * rowSize(); }
};

// Empty for fields that the writer does not accept, and for more than `maxData` bytes of pixels, so no size computed
// from a layout wraps.
std::optional<PixelLayout> pixelLayout(const TifImageInfo& info, std::size_t maxData = MaxImageData);

} // namespace tvmeta
