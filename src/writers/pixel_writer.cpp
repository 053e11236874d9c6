#include "writers/pixel_writer.h"

#include <algorithm>
#include <cstring>

namespace tvmeta {

namespace {

constexpr std::size_t CHUNK_BYTES = 1'048'576;

// Values of TifImageInfo::pixelMode and bitsCode.
enum PixelMode : std::int32_t { Unchanged = 0, HighBytes = 1 };
enum BitsCode : std::int32_t { Integer8 = 8, Integer16 = 16, Float32 = 32, Float16 = 3216 };

// 0: unknown.
std::size_t bytesPerSample(std::int32_t bitsCode) {
    const bool isTwo = bitsCode == Integer16 || bitsCode == Float16;
    return bitsCode == Integer8 ? 1 : isTwo ? 2 : bitsCode == Float32 ? 4 : 0;
}

bool isSupported(const TifImageInfo& info) {
    const bool dimensions = info.width >= 1 && info.height >= 0 && info.channels >= 1 && info.channels <= 4;
    const bool mode = info.pixelMode == Unchanged || (info.pixelMode == HighBytes && info.bitsCode == Integer8);
    return dimensions && mode && bytesPerSample(info.bitsCode) > 0;
}

template <std::size_t SampleSize>
void grayWithoutExtra(const unsigned char* from, unsigned char* to, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) {
        std::memcpy(to + i * SampleSize, from + i * 2 * SampleSize, SampleSize);
    }
}

// Copies whole source pixels, which takes one instruction each; the next pixel overwrites the extra sample. The last
// pixel is copied without it, so nothing is written after the row.
template <std::size_t SampleSize>
void rgbWithoutExtra(const unsigned char* from, unsigned char* to, std::size_t pixels) {
    constexpr std::size_t FromSize = 4 * SampleSize;
    constexpr std::size_t ToSize = 3 * SampleSize;
    for (; pixels > 1; --pixels) {
        std::memcpy(to, from, FromSize);
        from += FromSize;
        to += ToSize;
    }
    std::memcpy(to, from, pixels * ToSize);
}

constexpr std::size_t HighByte = 1; // of a sample in little-endian order

template <std::size_t Channels, std::size_t Samples>
void takeHighBytes(const unsigned char* from, unsigned char* to, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) {
        for (std::size_t sample = 0; sample < Samples; ++sample) {
            to[i * Samples + sample] = from[(i * Channels + sample) * 2 + HighByte];
        }
    }
}

// By the bytes of a sample: copies samples without the last channel.
constexpr PixelKernel GrayKernels[] = {nullptr, grayWithoutExtra<1>, grayWithoutExtra<2>, nullptr, grayWithoutExtra<4>};
constexpr PixelKernel RgbKernels[] = {nullptr, rgbWithoutExtra<1>, rgbWithoutExtra<2>, nullptr, rgbWithoutExtra<4>};

// By the number of channels: takes the high bytes of 16-bit samples, of 2 or 4 channels without the last.
constexpr PixelKernel HighByteKernels[] = {nullptr, takeHighBytes<1, 1>, takeHighBytes<2, 1>, takeHighBytes<3, 3>,
                                           takeHighBytes<4, 3>};

PixelKernel kernelFor(const PixelLayout& layout) {
    if (layout.takesHighBytes) {
        return HighByteKernels[layout.channels];
    }
    const bool copies = layout.channels == layout.samples;
    return copies ? nullptr : (layout.channels == 2 ? GrayKernels : RgbKernels)[layout.sampleBytes];
}

// The rows of a block. It has room for them with all source channels, in the written depth.
std::size_t rowsPerBlock(const PixelLayout& layout) {
    const std::size_t rows = CHUNK_BYTES / (layout.width * layout.channels * layout.sampleBytes);
    return std::min(std::max<std::size_t>(rows, 1), layout.height);
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

PixelWriter::PixelWriter(const void* pixels, std::ptrdiff_t rowPitch, const PixelLayout& layout)
    : layout_(layout), first_(static_cast<const unsigned char*>(pixels)), pitch_(rowPitch), kernel_(kernelFor(layout)),
      blockRows_(rowsPerBlock(layout)) {}

void PixelWriter::convert(std::size_t firstRow, std::size_t rows, unsigned char* block) const {
    for (std::size_t i = 0; i < rows; ++i) {
        unsigned char* const to = block + i * layout_.rowSize();
        if (kernel_ != nullptr) {
            kernel_(row(firstRow + i), to, layout_.width);
        } else {
            std::memcpy(to, row(firstRow + i), layout_.rowSize());
        }
    }
}

Result<std::int32_t> PixelWriter::write(std::FILE* stream, std::span<unsigned char> block) const {
    std::size_t rows = 0;
    for (std::size_t done = 0; done < layout_.height; done += rows) {
        rows = std::min(blockRows_, layout_.height - done);
        if (!isPacked()) {
            convert(done, rows, block.data());
        }
        if (std::fwrite(isPacked() ? row(done) : block.data(), layout_.rowSize(), rows, stream) != rows) {
            return Failure{BUF2TIF_PIXELS_FAILED};
        }
    }
    return static_cast<std::int32_t>(rows);
}

} // namespace tvmeta
