#include "support/text_search.h"

#include <algorithm>

namespace tvmeta {

namespace {

constexpr std::size_t NotFound = std::string_view::npos;

// Whole blocks are worth it only away from the places where what is searched stands close together.
constexpr std::size_t NearSize = 32;
constexpr std::size_t SmallBlock = 32;
constexpr std::size_t LargeBlock = 256;

// Whether the pair begins anywhere in the block of so many bytes (and the one behind it). Without a way out of the
// loop, so that the compiler turns it into vector compares.
template <std::size_t Size>
bool blockHoldsPair(const char* block, char first, char second) noexcept {
    unsigned char found = 0;
    for (std::size_t i = 0; i < Size; ++i) {
        found |=
            static_cast<unsigned char>(static_cast<int>(block[i] == first) & static_cast<int>(block[i + 1] == second));
    }
    return found != 0;
}

// Passes over whole blocks without the pair that begin at `from` and end at `to` at most.
template <std::size_t Size>
std::size_t skipBlocks(const char* text, std::size_t from, std::size_t to, char first, char second) noexcept {
    while (to - from >= Size && !blockHoldsPair<Size>(text + from, first, second)) {
        from += Size;
    }
    return from;
}

// Offset of the first place of the pair that begins in [from, to) of a text that is longer than `to`.
std::size_t scanForPair(const char* text, std::size_t from, std::size_t to, char first, char second) noexcept {
    for (; from < to; ++from) {
        if (text[from] == first && text[from + 1] == second) {
            return from;
        }
    }
    return NotFound;
}

// Offset of the first place of the pair; npos when there is none.
std::size_t findPair(std::string_view text, char first, char second, std::size_t from) noexcept {
    const std::size_t end = text.empty() ? 0 : text.size() - 1; // where no pair can begin any more
    if (from >= end) {
        return NotFound;
    }
    const std::size_t near = from + std::min(NearSize, end - from);
    if (const std::size_t found = scanForPair(text.data(), from, near, first, second); found != NotFound) {
        return found;
    }
    from = skipBlocks<LargeBlock>(text.data(), near, end, first, second);
    from = skipBlocks<SmallBlock>(text.data(), from, end, first, second);
    return scanForPair(text.data(), from, end, first, second);
}

} // namespace

std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from) noexcept {
    const char first = wanted.text[wanted.anchor];
    const char second = wanted.text[wanted.anchor + 1];
    if (from > text.size()) {
        return NotFound;
    }
    for (std::size_t at = from + wanted.anchor;; ++at) {
        at = findPair(text, first, second, at);
        if (at == NotFound) {
            return at;
        }
        if (textFrom(text, at - wanted.anchor).starts_with(wanted.text)) {
            return at - wanted.anchor;
        }
    }
}

std::size_t findQuoted(std::string_view text, const QuotedText& wanted, std::size_t from) noexcept {
    for (;; ++from) {
        from = findText(text, wanted.lead, from);
        if (from == NotFound) {
            return from;
        }
        const std::string_view here = textFrom(text, from);
        if (here.starts_with(wanted.apostrophes) || here.starts_with(wanted.quotationMarks)) {
            return from;
        }
    }
}

} // namespace tvmeta
