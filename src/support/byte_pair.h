// Support: search for two neighbouring bytes, at the speed of memory where they do not stand.
#pragma once

#include "support/processor.h"

#include <cstddef>
#include <string_view>

namespace tvmeta {

struct BytePair {
    char first;
    char second;
};

// Offset of the first place of the pair at `from` or later; npos when there is none.
std::size_t findPair(std::string_view text, BytePair pair, std::size_t from) noexcept;

// The two ways in which it is done, the second where the processor has AVX2: the first place of the pair that begins in
// [from, to) of a text that is longer than `to`.
std::size_t findPairInBlocks(const char* text, std::size_t from, std::size_t to, BytePair pair) noexcept;
#ifdef TVMETA_WIDE_VECTORS
std::size_t findPairInVectors(const char* text, std::size_t from, std::size_t to, BytePair pair) noexcept;
#endif

} // namespace tvmeta
