// Writers: the image of a TIFF result, as the caller describes it and as it is written (TIFF 6.0).
#pragma once

#include "support/tiff_vocabulary.h"
#include "tvmeta.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tvmeta {

// Values of TifImageInfo.
namespace pixel_mode {
inline constexpr std::int32_t Unchanged = 0;
inline constexpr std::int32_t HighBytes = 1; // the high bytes of 16-bit samples
} // namespace pixel_mode

namespace bits_code {
inline constexpr std::int32_t Integer8 = 8;
inline constexpr std::int32_t Integer16 = 16;
inline constexpr std::int32_t Float32 = 32;
inline constexpr std::int32_t Float16 = 3216;
} // namespace bits_code

// Positions in a result are signed 32-bit numbers.
inline constexpr std::size_t MaxFileSize = INT32_MAX;
inline constexpr std::size_t MaxImageData = MaxFileSize - TiffHeaderSize;

// The sizes that follow from a TifImageInfo.
class TiffImage {
  public:
    // The only way to create one. Empty for fields that the writer does not accept, and for more pixels than a file
    // can contain, so sizes computed from an image never wrap.
    static std::optional<TiffImage> from(const TifImageInfo& info);

    std::size_t rowSize() const { return width * samples * sampleBytes; }
    std::size_t dataSize() const { return height * rowSize(); }

    std::size_t width;
    std::size_t height;
    std::size_t channels; // of a source pixel
    std::size_t samples;  // of a written pixel, which has no alpha channel
    std::size_t sampleBytes;
    bool isFloat;
    bool takesHighBytes; // source samples have 16 bits, written ones 8

  private:
    explicit TiffImage(const TifImageInfo& info);
};

} // namespace tvmeta
