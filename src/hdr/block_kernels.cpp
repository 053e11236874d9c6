#include "hdr/block_kernels.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace tvmeta::hdr {

namespace {

constexpr std::size_t Lanes = 16; // independent sums, of 16 pixels each

// All bits or none: a choice that is no branch.
constexpr unsigned char maskOf(bool condition) noexcept {
    return static_cast<unsigned char>(condition ? 0xFF : 0);
}

unsigned char highestOf(const unsigned char* bytes) noexcept {
    unsigned char highest = 0;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        highest = std::max(highest, bytes[i]);
    }
    return highest;
}

unsigned char lowestOf(const unsigned char* bytes) noexcept {
    unsigned char lowest = std::numeric_limits<unsigned char>::max();
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        lowest = std::min(lowest, bytes[i]);
    }
    return lowest;
}

// 2^power of 0 and more, without a table: the power is the exponent field of a float.
float powerOfTwo(unsigned char power) noexcept {
    constexpr std::uint32_t One = std::bit_cast<std::uint32_t>(1.0F);
    constexpr int MantissaBits = std::numeric_limits<float>::digits - 1;
    return std::bit_cast<float>(One + (static_cast<std::uint32_t>(power) << MantissaBits));
}

// The sum of the block in units of its lowest exponent. Where there is no pixel the luminance is 0, and the power must
// not come out negative.
template <typename Sum>
double laneSum(const unsigned char* __restrict luminance, const unsigned char* __restrict exponents,
               unsigned char lowest) noexcept {
    unsigned char powers[BlockPixels];
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        powers[i] = static_cast<unsigned char>(std::max(exponents[i], lowest) - lowest);
    }
    Sum lanes[Lanes] = {};
    for (std::size_t i = 0; i < BlockPixels; i += Lanes) {
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            lanes[lane] += static_cast<Sum>(static_cast<float>(luminance[i + lane]) * powerOfTwo(powers[i + lane]));
        }
    }
    double sums[Lanes];
    std::copy_n(lanes, Lanes, sums);
    for (std::size_t half = Lanes / 2; half > 0; half /= 2) {
        for (std::size_t lane = 0; lane < half; ++lane) {
            sums[lane] += sums[lane + half];
        }
    }
    return sums[0];
}

} // namespace

ExponentRange exponentRange(const unsigned char* exponents) noexcept {
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

std::size_t countPixels(const unsigned char* exponents) noexcept {
    unsigned count = 0;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        count += exponents[i] != 0 ? 1U : 0U;
    }
    return count;
}

void luminances(const Block& block, unsigned char* __restrict out) noexcept {
    const unsigned char* const __restrict blue = block.blue;
    const unsigned char* const __restrict green = block.green;
    const unsigned char* const __restrict red = block.red;
    const unsigned char* const __restrict exponent = block.exponent;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        out[i] = luminance(blue[i], green[i], red[i]) & maskOf(exponent[i] != 0);
    }
}

// Both are done in two steps, since compilers see no vectors in a reduction of choices.
int highestLuminance(const unsigned char* __restrict luminance, const unsigned char* __restrict exponents,
                     int exponent) noexcept {
    const auto wanted = static_cast<unsigned char>(exponent);
    unsigned char chosen[BlockPixels];
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        chosen[i] = luminance[i] & maskOf(exponents[i] == wanted);
    }
    return highestOf(chosen);
}

int lowestLuminance(const unsigned char* __restrict luminance, const unsigned char* __restrict exponents,
                    int exponent) noexcept {
    const auto wanted = static_cast<unsigned char>(exponent);
    unsigned char chosen[BlockPixels]; // less one, so that luminances of 0 come out as none
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        chosen[i] = static_cast<unsigned char>(luminance[i] - 1) | maskOf(exponents[i] != wanted);
    }
    return lowestOf(chosen) + 1;
}

void scaledValues(const unsigned char* __restrict luminance, const unsigned char* __restrict exponents,
                  const float* __restrict scale, float* __restrict out) noexcept {
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        out[i] = static_cast<float>(luminance[i]) * scale[exponents[i]];
    }
}

double floatSum(const unsigned char* luminance, const unsigned char* exponents, int lowest) noexcept {
    static_assert(8 + FloatSpan + 4 <= std::numeric_limits<float>::digits); // luminance, span, 16 pixels of a lane
    return laneSum<float>(luminance, exponents, static_cast<unsigned char>(lowest));
}

double doubleSum(const unsigned char* luminance, const unsigned char* exponents, int lowest) noexcept {
    static_assert(8 + DoubleSpan + 8 <= std::numeric_limits<double>::digits); // luminance, span, 256 pixels
    return laneSum<double>(luminance, exponents, static_cast<unsigned char>(lowest));
}

} // namespace tvmeta::hdr
