// Writers: conversions of a run of pixels on their way into a file.
#pragma once

#include <cstddef>

namespace tvmeta {

// Converts so many pixels that lie one behind the other.
using PixelKernel = void (*)(const unsigned char* from, unsigned char* to, std::size_t pixels) noexcept;

// Samples as they are, without the last channel.
PixelKernel droppingKernel(std::size_t channels, std::size_t sampleBytes) noexcept;

// The high bytes of 16-bit samples in machine byte order; with an even number of channels without the last one.
PixelKernel highByteKernel(std::size_t channels) noexcept;

} // namespace tvmeta
