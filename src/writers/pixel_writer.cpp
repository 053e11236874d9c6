#include "writers/pixel_writer.h"

#include <algorithm>
#include <cstring>

namespace tvmeta {

namespace {

constexpr std::size_t CHUNK_BYTES = 1'048'576;

PixelKernel kernelFor(const TiffImage& image) {
    if (image.takesHighBytes) {
        return highByteKernel(image.channels);
    }
    return image.channels != image.samples ? droppingKernel(image.channels, image.sampleBytes) : nullptr;
}

// Rows per block. Its size is that of source rows, extra channel included, in the written depth.
std::size_t rowsPerBlock(const TiffImage& image) {
    const std::size_t rows = CHUNK_BYTES / (image.width * image.channels * image.sampleBytes);
    return std::min(std::max<std::size_t>(rows, 1), image.height);
}

} // namespace

PixelWriter::PixelWriter(const void* pixels, std::ptrdiff_t rowPitch, const TiffImage& image)
    : image_(image), first_(static_cast<const unsigned char*>(pixels)),
      pitch_(image.takesHighBytes ? rowPitch * 2 : rowPitch), kernel_(kernelFor(image)),
      blockRows_(rowsPerBlock(image)) {}

void PixelWriter::convert(std::size_t firstRow, std::size_t rows, unsigned char* block) const {
    for (std::size_t i = 0; i < rows; ++i) {
        unsigned char* const to = block + i * image_.rowSize();
        if (kernel_ != nullptr) {
            kernel_(row(firstRow + i), to, image_.width);
        } else {
            std::memcpy(to, row(firstRow + i), image_.rowSize());
        }
    }
}

Result<std::int32_t> PixelWriter::write(std::FILE* stream, std::span<unsigned char> block) const {
    std::size_t rows = 0;
    for (std::size_t done = 0; done < image_.height; done += rows) {
        rows = std::min(blockRows_, image_.height - done);
        if (!isPacked()) {
            convert(done, rows, block.data());
        }
        if (std::fwrite(isPacked() ? row(done) : block.data(), image_.rowSize(), rows, stream) != rows) {
            return Failure{BUF2TIF_PIXELS_FAILED};
        }
    }
    return static_cast<std::int32_t>(rows);
}

} // namespace tvmeta
