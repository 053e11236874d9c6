// Writers: the pixels of a TIFF result, as the caller describes them and as they are written (TIFF 6.0): one strip.
#pragma once

#include "support/result.h"
#include "support/tiff_vocabulary.h"
#include "tvmeta.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>

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

// Converts `pixels` adjacent pixels.
using PixelKernel = void (*)(const unsigned char* from, unsigned char* to, std::size_t pixels);

// Turns the caller's rows into rows of the file, block by block.
class PixelWriter {
  public:
    // `rowPitch` is in bytes.
    PixelWriter(const void* pixels, std::ptrdiff_t rowPitch, const PixelLayout& layout);

    // Bytes of the block that write() needs; 0 if rows are written from the caller's buffer.
    std::size_t blockSize() const { return isPacked() ? 0 : blockRows_ * layout_.rowSize(); }

    // Writes all rows. Returns the rows of the last block, or the result of buf2tif for the failure.
    Result<std::int32_t> write(std::FILE* stream, std::span<unsigned char> block) const;

  private:
    // Rows without conversion or padding are written from the caller's buffer.
    bool isPacked() const { return kernel_ == nullptr && pitch_ == static_cast<std::ptrdiff_t>(layout_.rowSize()); }
    const unsigned char* row(std::size_t index) const { return first_ + static_cast<std::ptrdiff_t>(index) * pitch_; }
    void convert(std::size_t firstRow, std::size_t rows, unsigned char* block) const;

    const PixelLayout& layout_;
    const unsigned char* first_; // row
    std::ptrdiff_t pitch_;       // bytes from one row to the next
    PixelKernel kernel_;         // converts a row; null: rows are written unchanged
    std::size_t blockRows_;
};

} // namespace tvmeta
