// Writers: the pixel strip of a TIFF result.
#pragma once

#include "support/result.h"
#include "writers/pixel_layout.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace tvmeta {

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
