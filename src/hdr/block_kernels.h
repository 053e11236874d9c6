// HDR: loops over a block of pixels. They have no branches, so they run in vector instructions.
#pragma once

#include "support/processor.h"

#include <cstddef>
#include <cstdint>

namespace tvmeta::hdr {

inline constexpr int LuminanceBits = 8;
inline constexpr int BlockBits = 9;
inline constexpr std::size_t MaxBlock = std::size_t{1} << BlockBits; // pixels
inline constexpr std::size_t BlockStep = 32;                         // a block's size is a multiple of it

// Pixels side by side in each of the four planes of a row. A pixel with exponent 0 does not count.
struct Pixels {
    const unsigned char* blue;
    const unsigned char* green;
    const unsigned char* red;
    const unsigned char* exponent;
    std::size_t size;
};

// A luminance mantissa, with the weights of ITU-R BT.709 in units of 1/256. The weighted sum fits 16 bits.
constexpr unsigned char luminance(unsigned char blue, unsigned char green, unsigned char red) {
    return static_cast<unsigned char>(static_cast<std::uint16_t>(19 * blue + 183 * green + 54 * red) >> 8);
}

// The exponents of the pixels that count. Without any, `highest` is 0.
struct ExponentRange {
    unsigned lowest;
    unsigned highest;
    unsigned count;
};

// Blocks of photographs span less. The bits of a luminance, of the span and of a sum of 32 pixels fit a float.
inline constexpr int MaxSpan = 11;

// The kernels in one instruction set. All sets give the same bits.
struct BlockKernels {
    ExponentRange (*exponentRange)(const Pixels& block);

    // The luminance of each pixel; 0 if it does not count.
    void (*luminances)(const Pixels& block, unsigned char* out);

    // The sum of luminance * 2^(exponent - lowest), for exponents that span at most MaxSpan.
    std::uint32_t (*sum)(const Pixels& block, const unsigned char* luminance, const ExponentRange& range);
};

extern const BlockKernels PortableKernels; // vectors as the compiler makes them
#ifdef TVMETA_X86_64
extern const BlockKernels Avx2Kernels;
#endif

// The fastest kernels that the processor runs. To ask it takes 10 us and more in a virtual machine.
const BlockKernels& fastestKernels();

} // namespace tvmeta::hdr
