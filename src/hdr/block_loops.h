// HDR: the loops over a block of pixels, for compilers to turn into vector instructions of whatever size the function
// that they are inlined into is compiled for. Of constant length, without a way out.
#pragma once

#include "hdr/block_kernels.h"

#include <algorithm>
#include <limits>

#define TVMETA_INLINE_LOOP [[gnu::always_inline]] inline

namespace tvmeta::hdr::loops {

// All bits or none: a choice that is no branch.
TVMETA_INLINE_LOOP unsigned char maskOf(bool condition) noexcept {
    return static_cast<unsigned char>(condition ? 0xFF : 0);
}

TVMETA_INLINE_LOOP ExponentRange exponentRange(const unsigned char* exponents) noexcept {
    unsigned char lowest = std::numeric_limits<unsigned char>::max();
    unsigned char lowestOfPixels = std::numeric_limits<unsigned char>::max(); // less one: no pixel is then the highest
    unsigned char highest = 0;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        lowest = std::min(lowest, exponents[i]);
        lowestOfPixels = std::min(lowestOfPixels, static_cast<unsigned char>(exponents[i] - 1));
        highest = std::max(highest, exponents[i]);
    }
    return {lowestOfPixels + 1, highest, lowest > 0};
}

// Both are done in two steps, since compilers see no vectors in a reduction of choices.
TVMETA_INLINE_LOOP int highestLuminance(const unsigned char* __restrict luminance,
                                        const unsigned char* __restrict exponents, int exponent) noexcept {
    const auto wanted = static_cast<unsigned char>(exponent);
    unsigned char chosen[BlockPixels];
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        chosen[i] = luminance[i] & maskOf(exponents[i] == wanted);
    }
    unsigned char highest = 0;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        highest = std::max(highest, chosen[i]);
    }
    return highest;
}

TVMETA_INLINE_LOOP int lowestLuminance(const unsigned char* __restrict luminance,
                                       const unsigned char* __restrict exponents, int exponent) noexcept {
    const auto wanted = static_cast<unsigned char>(exponent);
    unsigned char chosen[BlockPixels]; // less one, so that luminances of 0 come out as none
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        chosen[i] = static_cast<unsigned char>(luminance[i] - 1) | maskOf(exponents[i] != wanted);
    }
    unsigned char lowest = std::numeric_limits<unsigned char>::max();
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        lowest = std::min(lowest, chosen[i]);
    }
    return lowest + 1;
}

inline constexpr std::size_t BlockWords = BlockPixels / 64;

// A block whose values are rounded to whole multiples of the value of 1 at the exponent `unit`, halves downwards.
struct RoundedBlock {
    unsigned char luminance[BlockPixels];
    unsigned char exponent[BlockPixels]; // not below the unit's
    // One bit a pixel: the value is an odd multiple; exactly half a unit was cut off.
    std::uint64_t odd[BlockWords];
    std::uint64_t half[BlockWords];
};

// For each bit, whether there is an odd number of ones up to it.
TVMETA_INLINE_LOOP std::uint64_t runningParity(std::uint64_t bits) noexcept {
    for (int shift = 1; shift < 64; shift *= 2) {
        bits ^= bits << shift;
    }
    return bits;
}

// How many of the halves that were cut off round upwards: those that find the running total odd. Behind each of them it
// is even.
TVMETA_INLINE_LOOP int halvesUp(const RoundedBlock& block, bool totalIsOdd) noexcept {
    int count = 0;
    for (std::size_t word = 0; word < BlockWords; ++word) {
        const std::uint64_t halves = block.half[word];
        const std::uint64_t parity = runningParity(block.odd[word]);
        // A carry runs from each half at an odd parity through what lies behind it to the next half.
        const std::uint64_t odd = parity & halves;
        const std::uint64_t sources = odd << 1 | (totalIsOdd ? 1 : 0);
        const std::uint64_t carried = sources + ~halves;
        const bool carriedOut = carried < sources || odd >> 63 != 0;
        for (std::uint64_t up = (odd ^ carried) & halves; up != 0; up &= up - 1) {
            ++count;
        }
        totalIsOdd = (parity >> 63 != 0) != carriedOut;
    }
    return count;
}

} // namespace tvmeta::hdr::loops
