// Support: search for a fixed text in a long one.
#pragma once

#include <cstddef>
#include <string_view>

namespace tvmeta {

// The rest of a text from an offset on; empty at its end and behind. (string_view's own substr throws there.)
constexpr std::string_view textFrom(std::string_view text, std::size_t offset) noexcept {
    return offset < text.size() ? std::string_view(text.data() + offset, text.size() - offset) : std::string_view();
}

// A text to search for. `anchor` is the index of two neighbouring bytes of it that are rare in what is searched: whole
// blocks without that pair are passed over at the speed of memory.
struct SearchText {
    std::string_view text;
    std::size_t anchor;
};

// Offset of the first occurrence at `from` or later that lies wholly within `text`; npos when there is none.
std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from = 0) noexcept;

// The same text in its two XML forms: quoted with apostrophes and with quotation marks.
struct QuotedText {
    SearchText lead; // what both begin with, up to the quote
    std::string_view apostrophes;
    std::string_view quotationMarks;

    constexpr std::size_t size() const noexcept { return apostrophes.size(); }
};

// Offset of the first occurrence of either form.
std::size_t findQuoted(std::string_view text, const QuotedText& wanted, std::size_t from = 0) noexcept;

} // namespace tvmeta
