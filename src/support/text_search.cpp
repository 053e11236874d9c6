#include "support/text_search.h"

#include "support/byte_pair.h"

namespace tvmeta {

namespace {

constexpr std::size_t NotFound = std::string_view::npos;

} // namespace

std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from) noexcept {
    const BytePair pair{wanted.text[wanted.anchor], wanted.text[wanted.anchor + 1]};
    if (from > text.size()) {
        return NotFound;
    }
    for (std::size_t at = from + wanted.anchor;; ++at) {
        at = findPair(text, pair, at);
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
