// Writers: the pixel strip of a TIFF result.
#pragma once

#include "support/result.h"
#include "writers/pixel_kernels.h"
#include "writers/tiff_image.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace tvmeta {

// Turns the caller's rows into rows of the file, block by block.
class PixelWriter {
  public:
    // `rowPitch` is in bytes, or in 16-bit samples if the image takes high bytes.
    PixelWriter(const void* pixels, std::ptrdiff_t rowPitch, const TiffImage& image);

    // Bytes of the block that write() needs; 0 if rows are written from the caller's buffer.
    std::size_t blockSize() const { return isPacked() ? 0 : blockRows_ * image_.rowSize(); }

    // Writes all rows. Returns the rows of the last block, or the result of buf2tif for the failure.
    Result<std::int32_t> write(std::FILE* stream, std::span<unsigned char> block) const;

  private:
    // Rows without conversion or padding are written from the caller's buffer.
    bool isPacked() const { return kernel_ == nullptr && pitch_ == static_cast<std::ptrdiff_t>(image_.rowSize()); }
    const unsigned char* row(std::size_t index) const { return first_ + static_cast<std::ptrdiff_t>(index) * pitch_; }
    void convert(std::size_t firstRow, std::size_t rows, unsigned char* block) const;

    const TiffImage& image_;
    const unsigned char* first_; // row
    std::ptrdiff_t pitch_;       // bytes from one row to the next
    PixelKernel kernel_;         // converts a row; null: rows are written unchanged
    std::size_t blockRows_;
};

} // namespace tvmeta
