#include "hdr/block_loops.h"

#ifdef TVMETA_WIDE_VECTORS

#include <algorithm>
#include <array>
#include <immintrin.h>
#include <numeric>

// What is written here is compiled for AVX2; what it inlines from elsewhere, too.
#define TVMETA_AVX2 [[gnu::target("avx2")]]

namespace tvmeta::hdr {

namespace {

TVMETA_AVX2 __m256i load(const unsigned char* bytes) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

TVMETA_AVX2 void store(unsigned char* bytes, __m256i vector) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), vector);
}

// Sixteen bytes for both halves of a vector, to look up in.
TVMETA_AVX2 __m256i lookup(const std::array<unsigned char, 16>& table) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table.data())));
}

// The sum of the luminances with exponents from `first` on times 2^(exponent - first), as far as the powers fit 16
// bits with a sign. Exponents below come out as very high ones, since a block spans few, and count for nothing like
// those; pixels that are none have no luminance. Of each vector a lane of 32 bits takes four products.
constexpr int GroupSpan = 15;
static_assert(LuminanceBits + (GroupSpan - 1) + 2 + (BlockBits - 5) <= 32);
TVMETA_AVX2 std::uint64_t groupSum(const unsigned char* luminance, const unsigned char* exponents, int first) noexcept {
    const __m256i low = lookup({1, 2, 4, 8, 16, 32, 64, 128});
    const __m256i high = lookup({0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 4, 8, 16, 32, 64, 0});
    const __m256i base = _mm256_set1_epi8(static_cast<char>(first));
    const __m256i outside = _mm256_set1_epi8(GroupSpan); // where the tables hold 0
    const __m256i zero = _mm256_setzero_si256();
    __m256i lanes = zero;
    for (std::size_t i = 0; i < BlockPixels; i += sizeof lanes) {
        const __m256i light = load(luminance + i);
        const __m256i power = _mm256_min_epu8(_mm256_sub_epi8(load(exponents + i), base), outside);
        const __m256i lowFactor = _mm256_shuffle_epi8(low, power);
        const __m256i highFactor = _mm256_shuffle_epi8(high, power);
        const __m256i pairs1 =
            _mm256_madd_epi16(_mm256_unpacklo_epi8(light, zero), _mm256_unpacklo_epi8(lowFactor, highFactor));
        const __m256i pairs2 =
            _mm256_madd_epi16(_mm256_unpackhi_epi8(light, zero), _mm256_unpackhi_epi8(lowFactor, highFactor));
        lanes = _mm256_add_epi32(lanes, _mm256_add_epi32(pairs1, pairs2));
    }
    std::array<std::uint32_t, 8> sums;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums.data()), lanes);
    return std::accumulate(sums.begin(), sums.end(), std::uint64_t{0});
}

TVMETA_AVX2 double sum(const unsigned char* luminance, const unsigned char* exponents, int lowest,
                       int highest) noexcept {
    std::uint64_t total = 0;
    for (int first = lowest; first <= highest; first += GroupSpan) {
        total += groupSum(luminance, exponents, first) << (first - lowest);
    }
    return static_cast<double>(total);
}

// The weighted sums of sixteen pixels, from pairs of their blue and red bytes, and their green ones.
TVMETA_AVX2 __m256i weightedSum(__m256i blueRed, __m256i green) noexcept {
    const __m256i weights = _mm256_set1_epi16(54 << 8 | 19); // of red and blue
    const __m256i sum =
        _mm256_add_epi16(_mm256_maddubs_epi16(blueRed, weights), _mm256_mullo_epi16(green, _mm256_set1_epi16(183)));
    return _mm256_srli_epi16(sum, 8);
}

TVMETA_AVX2 void luminances(const Block& block, unsigned char* out) noexcept {
    const __m256i zero = _mm256_setzero_si256();
    for (std::size_t i = 0; i < BlockPixels; i += sizeof zero) {
        const __m256i blue = load(block.blue + i);
        const __m256i green = load(block.green + i);
        const __m256i red = load(block.red + i);
        const __m256i low = weightedSum(_mm256_unpacklo_epi8(blue, red), _mm256_unpacklo_epi8(green, zero));
        const __m256i high = weightedSum(_mm256_unpackhi_epi8(blue, red), _mm256_unpackhi_epi8(green, zero));
        const __m256i none = _mm256_cmpeq_epi8(load(block.exponent + i), zero);
        store(out + i, _mm256_andnot_si256(none, _mm256_packus_epi16(low, high)));
    }
}

// Bit i stands for pixel i of 32.
struct RoundedBits {
    std::uint32_t odd;
    std::uint32_t half;
};

TVMETA_AVX2 std::uint32_t highestBits(__m256i bytes) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

// In 256ths of the unit, so that the last eight bits are what is cut off: products of luminances and powers of two, the
// latter looked up as two bytes each.
TVMETA_AVX2 RoundedBits roundVector(const unsigned char* luminance, const unsigned char* exponents, int unit,
                                    unsigned char* outLuminance, unsigned char* outExponent) noexcept {
    const __m256i lowFactors = lookup({0, 1, 2, 4, 8, 16, 32, 64, 128});
    const __m256i highFactors = lookup({0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
    const __m256i atUnit = _mm256_set1_epi8(9);                          // the factor 256
    const __m256i below = _mm256_set1_epi8(static_cast<char>(unit - 9)); // less than half a unit, there and below
    const __m256i unitExponent = _mm256_set1_epi8(static_cast<char>(unit));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i fraction = _mm256_set1_epi16(255);
    const __m256i belowHalf = _mm256_set1_epi16(127);

    const __m256i light = load(luminance);
    const __m256i exponent = load(exponents);
    const __m256i power = _mm256_min_epu8(_mm256_subs_epu8(exponent, below), atUnit);
    const __m256i low = _mm256_shuffle_epi8(lowFactors, power);
    const __m256i high = _mm256_shuffle_epi8(highFactors, power);
    const __m256i parts1 = _mm256_mullo_epi16(_mm256_unpacklo_epi8(light, zero), _mm256_unpacklo_epi8(low, high));
    const __m256i parts2 = _mm256_mullo_epi16(_mm256_unpackhi_epi8(light, zero), _mm256_unpackhi_epi8(low, high));
    const __m256i rounded = _mm256_packus_epi16(_mm256_srli_epi16(_mm256_add_epi16(parts1, belowHalf), 8),
                                                _mm256_srli_epi16(_mm256_add_epi16(parts2, belowHalf), 8));
    const __m256i cutOff = _mm256_packus_epi16(_mm256_and_si256(parts1, fraction), _mm256_and_si256(parts2, fraction));
    const __m256i raised = _mm256_max_epu8(exponent, unitExponent);
    store(outLuminance, rounded);
    store(outExponent, raised);
    const __m256i lowestBit = _mm256_slli_epi16(rounded, 7); // as the highest of its byte
    return {highestBits(_mm256_and_si256(lowestBit, _mm256_cmpeq_epi8(raised, unitExponent))),
            highestBits(_mm256_cmpeq_epi8(cutOff, _mm256_set1_epi8(-128)))};
}

TVMETA_AVX2 void roundToUnit(const unsigned char* luminance, const unsigned char* exponents, int unit,
                             loops::RoundedBlock& out) noexcept {
    constexpr std::size_t Half = 32; // of a word of bits
    for (std::size_t word = 0; word < loops::BlockWords; ++word) {
        const std::size_t i = 2 * Half * word;
        const RoundedBits low = roundVector(luminance + i, exponents + i, unit, out.luminance + i, out.exponent + i);
        const std::size_t j = i + Half;
        const RoundedBits high = roundVector(luminance + j, exponents + j, unit, out.luminance + j, out.exponent + j);
        out.odd[word] = low.odd | std::uint64_t{high.odd} << Half;
        out.half[word] = low.half | std::uint64_t{high.half} << Half;
    }
}

TVMETA_AVX2 ExponentRange exponentRange(const unsigned char* exponents) noexcept {
    return loops::exponentRange(exponents);
}

TVMETA_AVX2 int highestLuminance(const unsigned char* luminance, const unsigned char* exponents,
                                 int exponent) noexcept {
    return loops::highestLuminance(luminance, exponents, exponent);
}

TVMETA_AVX2 int lowestLuminance(const unsigned char* luminance, const unsigned char* exponents, int exponent) noexcept {
    return loops::lowestLuminance(luminance, exponents, exponent);
}

// Every processor with AVX2 has the instruction that counts bits, which the loop in halvesUp becomes.
[[gnu::target("avx2,popcnt")]] double roundedSum(const unsigned char* luminance, const unsigned char* exponents,
                                                 int unit, int highest, bool totalIsOdd) noexcept {
    loops::RoundedBlock rounded;
    roundToUnit(luminance, exponents, unit, rounded);
    return sum(rounded.luminance, rounded.exponent, unit, std::max(highest, unit)) +
           loops::halvesUp(rounded, totalIsOdd);
}

} // namespace

constexpr BlockKernels Avx2Kernels = {exponentRange, luminances, highestLuminance, lowestLuminance, sum, roundedSum};

} // namespace tvmeta::hdr

#endif
