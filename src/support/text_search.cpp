#include "support/text_search.h"

#include "support/byte_pair.h"

#include <algorithm>

namespace tvmeta {

namespace {

constexpr std::size_t NotFound = std::string_view::npos;
constexpr char Apostrophe = '\'';

// Whether the text begins with the wanted one, with one kind of quote in place of the apostrophes.
bool startsWithQuoted(std::string_view text, std::string_view wanted, char quote) {
    return text.size() >= wanted.size() && std::equal(wanted.begin(), wanted.end(), text.begin(), [&](char w, char c) {
               return c == (w == Apostrophe ? quote : w);
           });
}

} // namespace

std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from) {
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

std::size_t findQuoted(std::string_view text, const QuotedText& wanted, std::size_t from) {
    const SearchText lead{wanted.text.substr(0, wanted.text.find(Apostrophe)), wanted.anchor};
    for (;; ++from) {
        from = findText(text, lead, from);
        if (from == NotFound) {
            return from;
        }
        const std::string_view found = textFrom(text, from);
        const std::string_view fromQuote = textFrom(found, lead.text.size());
        const char quote = fromQuote.starts_with('"') ? '"' : Apostrophe;
        if (startsWithQuoted(found, wanted.text, quote)) {
            return from;
        }
    }
}

} // namespace tvmeta
