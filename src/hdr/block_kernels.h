// HDR: statistics of shared-exponent pixels. Stands apart from everything else.
//
// What is done to a block of pixels: kernels without branches, in vector instructions.
#pragma once

#include "support/processor.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace tvmeta::hdr {

inline constexpr int BlockBits = 9;
inline constexpr std::size_t BlockPixels = std::size_t{1} << BlockBits;

// A block: one byte of each plane per pixel. An exponent of 0 means no pixel.
struct Block {
    const unsigned char* blue;
    const unsigned char* green;
    const unsigned char* red;
    const unsigned char* exponent;
};

// The exponents of a block's pixels; `highest` is 0 when it has none.
struct ExponentRange {
    int lowest;
    int highest;
    bool complete; // every pixel counts
};

inline constexpr int LuminanceBits = 8;

// A luminance mantissa, with the weights of ITU-R BT.709 in units of 1/256. Sixteen bits hold the weighted sum.
constexpr unsigned char luminance(unsigned char blue, unsigned char green, unsigned char red) noexcept {
    return static_cast<unsigned char>(static_cast<std::uint16_t>(19 * blue + 183 * green + 54 * red) >> 8);
}

inline constexpr int NoLuminance = 1 << LuminanceBits;

// The sum of a block fits the mantissa of a double, and so is exact in any order, for exponents that span at most so
// many.
inline constexpr int ExactSpan = std::numeric_limits<double>::digits - LuminanceBits - BlockBits;

// The lowest unit that values are rounded to: the kernels compare exponents with the unit less 9.
inline constexpr int LowestUnit = 10;

// The kernels, in one instruction set. All of them give the same bits.
struct BlockKernels {
    ExponentRange (*exponentRange)(const unsigned char* exponents) noexcept;

    // The luminances of a block; 0 where there is no pixel.
    void (*luminances)(const Block& block, unsigned char* out) noexcept;

    // The largest and the smallest positive luminance among the pixels of one exponent; 0 and NoLuminance when there
    // is none.
    int (*highestLuminance)(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept;
    int (*lowestLuminance)(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept;

    // The sum of luminances times 2^(exponent - lowest), for exponents that span at most ExactSpan.
    double (*sum)(const unsigned char* luminance, const unsigned char* exponents, int lowest, int highest) noexcept;

    // The same sum with every value rounded to a whole multiple of 1 at the exponent `unit`, in such units: to the
    // nearest, and from half-way to the one that makes the running total even, whose first parity is given. The unit
    // lies from LowestUnit to 255.
    double (*roundedSum)(const unsigned char* luminance, const unsigned char* exponents, int unit, int highest,
                         bool totalIsOdd) noexcept;
};

extern const BlockKernels PortableKernels; // what compilers make of plain loops
#ifdef TVMETA_WIDE_VECTORS
extern const BlockKernels Avx2Kernels; // in vectors of 32 bytes, for processors that have them
#endif

// The fastest that the processor has.
const BlockKernels& blockKernels() noexcept;

std::size_t countPixels(const unsigned char* exponents) noexcept;

} // namespace tvmeta::hdr
