#include "support/text_search.h"

namespace tvmeta {

namespace {

constexpr std::size_t BlockSize = 256;

// Whether the pair begins anywhere in the block of BlockSize bytes (and the one behind it). Without a way out of the
// loop, so that the compiler turns it into vector compares.
bool blockHoldsPair(const char* block, char first, char second) noexcept {
    unsigned char found = 0;
    for (std::size_t i = 0; i < BlockSize; ++i) {
        found |=
            static_cast<unsigned char>(static_cast<int>(block[i] == first) & static_cast<int>(block[i + 1] == second));
    }
    return found != 0;
}

// Offset of the first place of the pair; npos when there is none.
std::size_t findPair(std::string_view text, char first, char second, std::size_t from) noexcept {
    while (from < text.size() && text.size() - from > BlockSize && !blockHoldsPair(text.data() + from, first, second)) {
        from += BlockSize;
    }
    for (; from < text.size() && text.size() - from > 1; ++from) {
        if (text[from] == first && text[from + 1] == second) {
            return from;
        }
    }
    return std::string_view::npos;
}

} // namespace

std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from) noexcept {
    const char first = wanted.text[wanted.anchor];
    const char second = wanted.text[wanted.anchor + 1];
    if (from > text.size()) {
        return std::string_view::npos;
    }
    for (std::size_t at = from + wanted.anchor;; ++at) {
        at = findPair(text, first, second, at);
        if (at == std::string_view::npos) {
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
        if (from == std::string_view::npos) {
            return from;
        }
        const std::string_view here = textFrom(text, from);
        if (here.starts_with(wanted.apostrophes) || here.starts_with(wanted.quotationMarks)) {
            return from;
        }
    }
}

} // namespace tvmeta
