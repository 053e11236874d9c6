// The kernels in vectors of 32 bytes. Only what is in these functions is compiled for AVX2.
#include "hdr/block_kernels.h"

#ifdef TVMETA_X86_64

#include <array>
#include <immintrin.h>
#include <numeric>

#define TVMETA_AVX2 TVMETA_TARGET("avx2")

namespace tvmeta::hdr {

namespace {

static_assert(BlockStep == sizeof(__m256i));

TVMETA_AVX2 __m256i load(const unsigned char* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

// The smallest of 32 bytes, by way of the smallest of eight 16-bit numbers.
TVMETA_AVX2 unsigned smallest(__m256i bytes) {
    const __m128i half = _mm_min_epu8(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
    return static_cast<unsigned char>(_mm_cvtsi128_si32(_mm_minpos_epu16(_mm_min_epu8(half, _mm_srli_epi16(half, 8)))));
}

TVMETA_AVX2 std::uint32_t sumOfLanes(__m256i lanes) {
    std::array<std::uint32_t, 8> sums;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums.data()), lanes);
    return std::accumulate(sums.begin(), sums.end(), 0U);
}

TVMETA_AVX2 ExponentRange exponentRange(const Pixels& block) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i ones = _mm256_set1_epi8(-1);
    __m256i lowest = ones; // less one, so that an exponent of 0 becomes the highest
    __m256i highest = zero;
    __m256i none = zero; // the pixels that do not count
    for (std::size_t i = 0; i < block.size; i += BlockStep) {
        const __m256i exponent = load(block.exponent + i);
        lowest = _mm256_min_epu8(lowest, _mm256_add_epi8(exponent, ones));
        highest = _mm256_max_epu8(highest, exponent);
        none = _mm256_sub_epi8(none, _mm256_cmpeq_epi8(exponent, zero));
    }
    const auto count = static_cast<unsigned>(block.size) - sumOfLanes(_mm256_sad_epu8(none, zero));
    return {smallest(lowest) + 1, 0xFF - smallest(_mm256_xor_si256(highest, ones)), count};
}

// The weighted sums of sixteen pixels, divided by 256.
TVMETA_AVX2 __m256i weigh(__m256i blueRed, __m256i green) {
    const __m256i ofBlueRed = _mm256_maddubs_epi16(blueRed, _mm256_set1_epi16(54 << 8 | 19));
    return _mm256_srli_epi16(_mm256_add_epi16(ofBlueRed, _mm256_mullo_epi16(green, _mm256_set1_epi16(183))), 8);
}

TVMETA_AVX2 void luminances(const Pixels& block, unsigned char* out) {
    const __m256i zero = _mm256_setzero_si256();
    for (std::size_t i = 0; i < block.size; i += BlockStep) {
        const __m256i blue = load(block.blue + i);
        const __m256i green = load(block.green + i);
        const __m256i red = load(block.red + i);
        const __m256i low = weigh(_mm256_unpacklo_epi8(blue, red), _mm256_unpacklo_epi8(green, zero));
        const __m256i high = weigh(_mm256_unpackhi_epi8(blue, red), _mm256_unpackhi_epi8(green, zero));
        const __m256i none = _mm256_cmpeq_epi8(load(block.exponent + i), zero);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                            _mm256_andnot_si256(none, _mm256_packus_epi16(low, high)));
    }
}

// The factor 2^power of each pixel is looked up in two halves of eight bits. The power of a pixel that does not count
// is any, but its luminance is 0.
TVMETA_AVX2 std::uint32_t sum(const Pixels& block, const unsigned char* luminance, const ExponentRange& range) {
    static_assert(MaxSpan < 15);
    const __m256i low =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i high = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 4, 8, 16, 32, 64, 0));
    const __m256i lowest = _mm256_set1_epi8(static_cast<char>(range.lowest));
    const __m256i zero = _mm256_setzero_si256();
    __m256i lanes = zero;
    for (std::size_t i = 0; i < block.size; i += BlockStep) {
        const __m256i light = load(luminance + i);
        const __m256i power = _mm256_sub_epi8(load(block.exponent + i), lowest);
        const __m256i lowFactor = _mm256_shuffle_epi8(low, power);
        const __m256i highFactor = _mm256_shuffle_epi8(high, power);
        const __m256i sums1 =
            _mm256_madd_epi16(_mm256_unpacklo_epi8(light, zero), _mm256_unpacklo_epi8(lowFactor, highFactor));
        const __m256i sums2 =
            _mm256_madd_epi16(_mm256_unpackhi_epi8(light, zero), _mm256_unpackhi_epi8(lowFactor, highFactor));
        lanes = _mm256_add_epi32(lanes, _mm256_add_epi32(sums1, sums2));
    }
    return sumOfLanes(lanes);
}

} // namespace

constexpr BlockKernels Avx2Kernels = {exponentRange, luminances, sum};

} // namespace tvmeta::hdr

#endif
