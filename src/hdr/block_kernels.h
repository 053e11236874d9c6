// HDR: statistics of shared-exponent pixels. Stands apart from everything else.
//
// What is done to a block of pixels, as loops of constant length without a way out, which the compiler turns into
// vector instructions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tvmeta::hdr {

inline constexpr std::size_t BlockPixels = 256;

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

ExponentRange exponentRange(const unsigned char* exponents) noexcept;

std::size_t countPixels(const unsigned char* exponents) noexcept;

// A luminance mantissa, with the weights of ITU-R BT.709 in units of 1/256. Sixteen bits hold the weighted sum.
constexpr unsigned char luminance(unsigned char blue, unsigned char green, unsigned char red) noexcept {
    return static_cast<unsigned char>(static_cast<std::uint16_t>(19 * blue + 183 * green + 54 * red) >> 8);
}

// The luminances of a block; 0 where there is no pixel.
void luminances(const Block& block, unsigned char* out) noexcept;

// The largest and the smallest positive luminance among the pixels of one exponent; 0 and NoLuminance when there is
// none.
inline constexpr int NoLuminance = 256;
int highestLuminance(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept;
int lowestLuminance(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept;

// Luminances times the scale of their exponents, in single precision.
void scaledValues(const unsigned char* luminance, const unsigned char* exponents, const float* scale,
                  float* out) noexcept;

// The sum of luminances times 2^(exponent - lowest), exact for any order of addition: floatSum for exponents that span
// at most FloatSpan, doubleSum for at most DoubleSpan.
inline constexpr int FloatSpan = 12;
inline constexpr int DoubleSpan = 37;
double floatSum(const unsigned char* luminance, const unsigned char* exponents, int lowest) noexcept;
double doubleSum(const unsigned char* luminance, const unsigned char* exponents, int lowest) noexcept;

} // namespace tvmeta::hdr
