#include "writers/pixel_kernels.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace tvmeta {

namespace {

template <std::size_t FromSize, std::size_t ToSize>
void dropTail(const unsigned char* from, unsigned char* to, std::size_t pixels) noexcept {
    for (std::size_t i = 0; i < pixels; ++i) {
        std::memcpy(to + i * ToSize, from + i * FromSize, ToSize);
    }
}

constexpr std::size_t HighByte = std::endian::native == std::endian::little ? 1 : 0;

template <std::size_t Channels, std::size_t Samples>
void takeHighBytes(const unsigned char* from, unsigned char* to, std::size_t pixels) noexcept {
    for (std::size_t i = 0; i < pixels; ++i) {
        for (std::size_t sample = 0; sample < Samples; ++sample) {
            to[i * Samples + sample] = from[(i * Channels + sample) * 2 + HighByte];
        }
    }
}

} // namespace

PixelKernel droppingKernel(std::size_t channels, std::size_t sampleBytes) noexcept {
    const bool gray = channels == 2;
    switch (sampleBytes) {
    case 1:
        return gray ? dropTail<2, 1> : dropTail<4, 3>;
    case 2:
        return gray ? dropTail<4, 2> : dropTail<8, 6>;
    default:
        return gray ? dropTail<8, 4> : dropTail<16, 12>;
    }
}

PixelKernel highByteKernel(std::size_t channels) noexcept {
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
