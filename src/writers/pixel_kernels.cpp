#include "writers/pixel_kernels.h"

#include <cstring>

namespace tvmeta {

namespace {

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

} // namespace

PixelKernel droppingKernel(std::size_t channels, std::size_t sampleBytes) {
    const bool gray = channels == 2;
    switch (sampleBytes) {
    case 1:
        return gray ? grayWithoutExtra<1> : rgbWithoutExtra<1>;
    case 2:
        return gray ? grayWithoutExtra<2> : rgbWithoutExtra<2>;
    default:
        return gray ? grayWithoutExtra<4> : rgbWithoutExtra<4>;
    }
}

PixelKernel highByteKernel(std::size_t channels) {
    switch (channels) {
    case 1:
        return takeHighBytes<1, 1>;
    case 2:
        return takeHighBytes<2, 1>;
    case 3:
        return takeHighBytes<3, 3>;
    default:
        return takeHighBytes<4, 3>;
    }
}

} // namespace tvmeta
