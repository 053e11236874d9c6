#include "support/text_search.h"

namespace tvmeta {

namespace {

// Blocks pay only away from the places where the text is full of pairs.
constexpr std::size_t NearSize = 32;
constexpr std::size_t SmallBlock = 32;
constexpr std::size_t LargeBlock = 256;

// Whether a pair begins anywhere in a block. No early exit, so the compiler vectorizes the loop.
template <std::size_t Size>
bool blockContainsPair(const char* block, char first, char second) {
    unsigned char leastDifference = 0xFF;
    for (std::size_t i = 0; i < Size; ++i) {
        const int difference = (block[i] ^ first) | (block[i + 1] ^ second);
        leastDifference = std::min(leastDifference, static_cast<unsigned char>(difference));
    }
    return leastDifference == 0;
}

// Skips blocks without the pair that begin at `from` and end at or before `to`.
template <std::size_t Size>
std::size_t skipBlocks(const char* text, std::size_t from, std::size_t to, std::string_view pair) {
    while (to - from >= Size && !blockContainsPair<Size>(text + from, pair[0], pair[1])) {
        from += Size;
    }
    return from;
}

// Offset of the first pair that begins in [from, to) of a text that is longer than `to`; `to` if there is none.
std::size_t scanForPair(const char* text, std::size_t from, std::size_t to, std::string_view pair) {
    while (from < to && (text[from] != pair[0] || text[from + 1] != pair[1])) {
        ++from;
    }
    return from;
}

// Offset of the first pair at `from` or later.
std::size_t findPair(std::string_view text, std::string_view pair, std::size_t from) {
    const std::size_t end = std::max(from, text.empty() ? 0 : text.size() - 1); // no pair begins here or later
    const std::size_t nearEnd = from + std::min(NearSize, end - from);
    std::size_t at = scanForPair(text.data(), from, nearEnd, pair);
    if (at == nearEnd) {
        at = skipBlocks<LargeBlock>(text.data(), nearEnd, end, pair);
        at = skipBlocks<SmallBlock>(text.data(), at, end, pair);
        at = scanForPair(text.data(), at, end, pair);
    }
    return at < end ? at : NotFound;
}

} // namespace

std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from) {
    if (from > text.size()) {
        return NotFound;
    }
    const std::string_view pair = textFrom(wanted.text, wanted.rarePair).substr(0, 2);
    for (std::size_t at = from + wanted.rarePair; (at = findPair(text, pair, at)) != NotFound; ++at) {
        if (textFrom(text, at - wanted.rarePair).starts_with(wanted.text)) {
            return at - wanted.rarePair;
        }
    }
    return NotFound;
}

std::size_t findQuoted(std::string_view text, const QuotedText& wanted, std::size_t from) {
    for (from = findText(text, wanted.lead, from); from != NotFound; from = findText(text, wanted.lead, from + 1)) {
        const std::string_view found = textFrom(text, from);
        const char quote = textFrom(found, wanted.lead.text.size()).starts_with('"') ? '"' : '\'';
        const auto matches = [quote](char w, char c) { return c == (w == '\'' ? quote : w); };
        if (found.size() >= wanted.size() &&
            std::equal(wanted.text.begin(), wanted.text.end(), found.begin(), matches)) {
            return from;
        }
    }
    return NotFound;
}

} // namespace tvmeta
