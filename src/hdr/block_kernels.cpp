#include "hdr/block_kernels.h"

#include "hdr/block_loops.h"
#include "support/processor.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace tvmeta::hdr {

namespace {

constexpr std::size_t Lanes = 16; // independent sums

// The sum in single precision is exact for smaller spans; of each group of lanes, a lane takes one pixel.
constexpr int FloatSpan = 11;
static_assert(LuminanceBits + FloatSpan + (BlockBits - 4) <= std::numeric_limits<float>::digits);

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

double sum(const unsigned char* luminance, const unsigned char* exponents, int lowest, int highest) noexcept {
    const auto relativeSum = highest - lowest <= FloatSpan ? laneSum<float> : laneSum<double>;
    return relativeSum(luminance, exponents, static_cast<unsigned char>(lowest));
}

// The lowest bits of 64 bytes. Eight at a time: the product moves the bit of byte k to bit 56 + k.
std::uint64_t lowestBits(const unsigned char* bytes) noexcept {
    constexpr std::uint64_t LowestOfEach = 0x0101010101010101;
    constexpr std::uint64_t Gather =
        std::endian::native == std::endian::little ? 0x0102040810204080 : 0x8040201008040201;
    std::uint64_t bits = 0;
    for (unsigned group = 0; group < 64; group += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, bytes + group, sizeof eight);
        bits |= ((eight & LowestOfEach) * Gather >> 56) << group;
    }
    return bits;
}

// In 256ths of a unit, so that the last eight bits are what is cut off. Step by step, since compilers see vectors in
// loops that do one thing.
void roundToUnit(const unsigned char* __restrict luminance, const unsigned char* __restrict exponents, int unit,
                 loops::RoundedBlock& __restrict out) noexcept {
    constexpr int FractionBits = 8;
    constexpr unsigned Half = 1U << (FractionBits - 1);
    const auto unitExponent = static_cast<unsigned char>(unit);
    const auto lowest = static_cast<unsigned char>(unit - FractionBits); // below, a value is less than half a unit
    unsigned char powers[BlockPixels];
    unsigned char visible[BlockPixels];
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        powers[i] = static_cast<unsigned char>(std::clamp(exponents[i], lowest, unitExponent) - lowest);
        visible[i] = luminance[i] & loops::maskOf(exponents[i] >= lowest);
        out.exponent[i] = std::max(exponents[i], unitExponent);
    }
    std::uint16_t parts[BlockPixels];
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        parts[i] = static_cast<std::uint16_t>(
            static_cast<std::int32_t>(static_cast<float>(visible[i]) * powerOfTwo(powers[i])));
    }
    unsigned char halves[BlockPixels];
    unsigned char odds[BlockPixels];
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        out.luminance[i] = static_cast<unsigned char>((parts[i] + (Half - 1)) >> FractionBits);
    }
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        halves[i] = loops::maskOf(static_cast<unsigned char>(parts[i]) == Half);
        odds[i] = out.luminance[i] & loops::maskOf(exponents[i] <= unitExponent);
    }
    for (std::size_t word = 0; word < loops::BlockWords; ++word) {
        out.odd[word] = lowestBits(odds + 64 * word);
        out.half[word] = lowestBits(halves + 64 * word);
    }
}

double roundedSum(const unsigned char* luminance, const unsigned char* exponents, int unit, int highest,
                  bool totalIsOdd) noexcept {
    loops::RoundedBlock rounded;
    roundToUnit(luminance, exponents, unit, rounded);
    return sum(rounded.luminance, rounded.exponent, unit, std::max(highest, unit)) +
           loops::halvesUp(rounded, totalIsOdd);
}

ExponentRange exponentRange(const unsigned char* exponents) noexcept {
    return loops::exponentRange(exponents);
}

void luminances(const Block& block, unsigned char* __restrict out) noexcept {
    const unsigned char* const __restrict blue = block.blue;
    const unsigned char* const __restrict green = block.green;
    const unsigned char* const __restrict red = block.red;
    const unsigned char* const __restrict exponent = block.exponent;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        out[i] = luminance(blue[i], green[i], red[i]) & loops::maskOf(exponent[i] != 0);
    }
}

int highestLuminance(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept {
    return loops::highestLuminance(luminance, exponents, exponent);
}

int lowestLuminance(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept {
    return loops::lowestLuminance(luminance, exponents, exponent);
}

} // namespace

constexpr BlockKernels PortableKernels = {exponentRange,   luminances, highestLuminance,
                                          lowestLuminance, sum,        roundedSum};

const BlockKernels& blockKernels() noexcept {
#ifdef TVMETA_WIDE_VECTORS
    if (hasAvx2()) {
        return Avx2Kernels;
    }
#endif
    return PortableKernels;
}

std::size_t countPixels(const unsigned char* exponents) noexcept {
    unsigned count = 0;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        count += exponents[i] != 0 ? 1U : 0U;
    }
    return count;
}

} // namespace tvmeta::hdr
