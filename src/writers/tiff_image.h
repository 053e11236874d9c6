// Writers: the image of a TIFF result, as it is given and as it is written (TIFF 6.0).
#pragma once

#include "support/tiff_vocabulary.h"
#include "tvmeta.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace tvmeta {

// Values of TifImageInfo.
namespace pixel_mode {
inline constexpr std::int32_t AsIs = 0;
inline constexpr std::int32_t HighBytes = 1; // the high bytes of 16-bit samples
} // namespace pixel_mode

namespace bits_code {
inline constexpr std::int32_t Integer8 = 8;
inline constexpr std::int32_t Integer16 = 16;
inline constexpr std::int32_t Float32 = 32;
inline constexpr std::int32_t Float16 = 3216;
} // namespace bits_code

// Positions in a TIFF file are signed 32-bit numbers here.
inline constexpr std::size_t MaxFileSize = INT32_MAX;
inline constexpr std::size_t MaxImageData = MaxFileSize - TiffHeaderSize;

// The sizes that follow from a TifImageInfo.
class TiffImage {
  public:
    std::size_t width;
    std::size_t height;
    std::size_t channels; // of a source pixel
    std::size_t samples;  // written per pixel: an extra channel such as alpha is not written
    std::size_t sampleBytes;
    bool isFloat;
    bool takesHighBytes; // source samples have 16 bits, written ones 8

    // The only way to get one: empty for fields that the writer does not accept, and for more pixels than a file can
    // have. Sizes computed from an image are therefore correct.
    static std::optional<TiffImage> from(const TifImageInfo& info) noexcept;

    std::size_t rowSize() const noexcept { return width * samples * sampleBytes; }
    std::size_t dataSize() const noexcept { return height * rowSize(); }

  private:
    explicit TiffImage(const TifImageInfo& info) noexcept;
};

namespace write_result {
inline constexpr std::int32_t NoMemory = -1;
inline constexpr std::int32_t CannotOpen = -1;
inline constexpr std::int32_t HeaderFailed = -2;
inline constexpr std::int32_t PixelsFailed = -3;
inline constexpr std::int32_t NoPixelMemory = -4;
inline constexpr std::int32_t BadArguments = -6;
inline constexpr std::int32_t DirectoryFailed = -12;
} // namespace write_result

// Writes the rows of the image as one strip. `rowPitch` is in bytes, or in 16-bit samples when the image takes high
// bytes. Returns the rows of the last block written, or a negative write_result.
std::int32_t writePixels(std::FILE* stream, const void* pixels, std::ptrdiff_t rowPitch,
                         const TiffImage& image) noexcept;

} // namespace tvmeta
