// Support: search for a fixed text in a long one.
#pragma once

#include <cstddef>
#include <string_view>

namespace tvmeta {

// The text from an offset on; empty if the offset is not below its size. (string_view's substr throws beyond the end.)
constexpr std::string_view textFrom(std::string_view text, std::size_t offset) {
    return offset < text.size() ? std::string_view(text.data() + offset, text.size() - offset) : std::string_view();
}

// A text to search for. `anchor` is the index of two adjacent bytes in it that are rare where it is searched for: text
// without that pair is skipped in blocks.
struct SearchText {
    std::string_view text;
    std::size_t anchor;
};

// Offset of the first occurrence at `from` or later that is wholly within `text`; npos if there is none.
std::size_t findText(std::string_view text, const SearchText& wanted, std::size_t from = 0);

// A text to search for that is quoted with apostrophes, as here, or with quotation marks. The anchor is before the
// first quote.
struct QuotedText {
    std::string_view text;
    std::size_t anchor;

    constexpr std::size_t size() const { return text.size(); }
};

// Offset of the first occurrence with either quotes. An occurrence that mixes them does not count.
std::size_t findQuoted(std::string_view text, const QuotedText& wanted, std::size_t from = 0);

} // namespace tvmeta
