// Writers: conversions of adjacent pixels for a file.
#pragma once

#include <cstddef>

namespace tvmeta {

// Converts `pixels` adjacent pixels.
using PixelKernel = void (*)(const unsigned char* from, unsigned char* to, std::size_t pixels);

// Copies samples without the last channel.
PixelKernel droppingKernel(std::size_t channels, std::size_t sampleBytes);

// Takes the high bytes of 16-bit samples in machine byte order; of 2 or 4 channels without the last.
PixelKernel highByteKernel(std::size_t channels);

} // namespace tvmeta
