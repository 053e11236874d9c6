#include "writers/pixel_writer.h"

#include "support/zeroed_buffer.h"
#include "writers/pixel_kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tvmeta {

namespace {

constexpr std::size_t CHUNK_BYTES = 1'048'576;

// The source of an image's rows.
struct PixelSource {
    const unsigned char* row; // the next one
    std::ptrdiff_t pitch;     // bytes from one row to the next
    PixelKernel kernel;       // converts a row; null: rows are written unchanged
};

PixelSource sourceOf(const void* pixels, std::ptrdiff_t rowPitch, const TiffImage& image) {
    const auto* const row = static_cast<const unsigned char*>(pixels);
    if (image.takesHighBytes) {
        return {row, rowPitch * 2, highByteKernel(image.channels)};
    }
    const bool dropsChannel = image.channels != image.samples;
    return {row, rowPitch, dropsChannel ? droppingKernel(image.channels, image.sampleBytes) : nullptr};
}

// Rows per block. Its size is that of source rows, extra channel included, in the written depth.
std::size_t rowsPerBlock(const TiffImage& image) {
    return std::max<std::size_t>(CHUNK_BYTES / (image.width * image.channels * image.sampleBytes), 1);
}

void fillBlock(unsigned char* block, PixelSource source, std::size_t rows, const TiffImage& image) {
    for (std::size_t i = 0; i < rows; ++i) {
        if (source.kernel != nullptr) {
            source.kernel(source.row, block, image.width);
        } else {
            std::memcpy(block, source.row, image.rowSize());
        }
        block += image.rowSize();
        source.row += source.pitch;
    }
}

} // namespace

Result<std::int32_t> writePixels(std::FILE* stream, const void* pixels, std::ptrdiff_t rowPitch,
                                 const TiffImage& image) {
    if (image.height == 0) {
        return 0;
    }
    PixelSource source = sourceOf(pixels, rowPitch, image);
    // Rows without conversion or padding are written from the caller's buffer.
    const bool isPacked = source.kernel == nullptr && source.pitch == static_cast<std::ptrdiff_t>(image.rowSize());
    const std::size_t blockRows = std::min(rowsPerBlock(image), image.height);
    ZeroedBuffer buffer(isPacked ? 0 : blockRows * image.rowSize());
    if (!buffer) {
        return Failure{BUF2TIF_NO_PIXEL_MEMORY};
    }
    std::size_t rows = 0;
    for (std::size_t done = 0; done < image.height; done += rows) {
        rows = std::min(blockRows, image.height - done);
        if (!isPacked) {
            fillBlock(buffer.data(), source, rows, image);
        }
        const unsigned char* const block = isPacked ? source.row : buffer.data();
        if (std::fwrite(block, image.rowSize(), rows, stream) != rows) {
            return Failure{BUF2TIF_PIXELS_FAILED};
        }
        source.row += static_cast<std::ptrdiff_t>(rows) * source.pitch;
    }
    return static_cast<std::int32_t>(rows);
}

} // namespace tvmeta
