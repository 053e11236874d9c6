#include "support/byte_pair.h"

#include <algorithm>

namespace tvmeta {

namespace {

constexpr std::size_t NotFound = std::string_view::npos;

// Blocks pay only away from the places where the text is full of pairs.
constexpr std::size_t NearSize = 32;
constexpr std::size_t SmallBlock = 32;
constexpr std::size_t LargeBlock = 256;

// Whether the pair begins anywhere in a block. No early exit, so the compiler vectorizes the loop.
template <std::size_t Size>
bool blockContainsPair(const char* block, BytePair pair) {
    unsigned char leastDifference = 0xFF;
    for (std::size_t i = 0; i < Size; ++i) {
        const int difference = (block[i] ^ pair.first) | (block[i + 1] ^ pair.second);
        leastDifference = std::min(leastDifference, static_cast<unsigned char>(difference));
    }
    return leastDifference == 0;
}

// Skips blocks without the pair that begin at `from` and end at or before `to`.
template <std::size_t Size>
std::size_t skipBlocks(const char* text, std::size_t from, std::size_t to, BytePair pair) {
    while (to - from >= Size && !blockContainsPair<Size>(text + from, pair)) {
        from += Size;
    }
    return from;
}

// Offset of the first pair that begins in [from, to) of a text that is longer than `to`.
std::size_t scanForPair(const char* text, std::size_t from, std::size_t to, BytePair pair) {
    for (; from < to; ++from) {
        if (text[from] == pair.first && text[from + 1] == pair.second) {
            return from;
        }
    }
    return NotFound;
}

} // namespace

std::size_t findPair(std::string_view text, BytePair pair, std::size_t from) {
    const std::size_t end = text.empty() ? 0 : text.size() - 1; // no pair begins here or later
    if (from >= end) {
        return NotFound;
    }
    const std::size_t near = from + std::min(NearSize, end - from);
    if (const std::size_t found = scanForPair(text.data(), from, near, pair); found != NotFound) {
        return found;
    }
    from = skipBlocks<LargeBlock>(text.data(), near, end, pair);
    from = skipBlocks<SmallBlock>(text.data(), from, end, pair);
    return scanForPair(text.data(), from, end, pair);
}

} // namespace tvmeta
