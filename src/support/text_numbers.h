// Support: numbers in texts, as C's "%d", "%f" and "%.Nf" conversions scan and print them in the "C" locale. The locale
// of the process makes no difference.
#pragma once

#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Scans a "%d" at the start of the text and removes it from there. A number beyond 64 bits saturates.
std::optional<std::int64_t> scanInteger(std::string_view& text);

// Scans a "%f" at the start of the text, decimal or hexadecimal. A number that is too large gives infinity. "0x"
// without a digit or a point after it is no number.
//
// "inf", "infinity" and "nan" are read in any case, with or without a sign. As C requires (and unlike strtof), "inf"
// followed by an 'i' is a number only if it is "infinity". "nan" is a number whatever follows: of "nan(abc)", closed or
// not, the parentheses are left in the text, as glibc's sscanf does, so they do not change the NaN's payload.
std::optional<float> scanFloat(std::string_view text);

// Prints an integer as "%lld" does.
struct PrintedInteger {
    explicit PrintedInteger(std::int64_t value)
        : size(static_cast<std::size_t>(std::to_chars(digits, std::end(digits), value).ptr - digits)) {}
    std::string_view text() const { return {digits, size}; }

    char digits[std::numeric_limits<std::int64_t>::digits10 + 2]; // and a sign
    std::size_t size;
};

// Room for any float printed with MaxDecimals decimals: sign, digits, point, decimals.
inline constexpr int MaxDecimals = 6;
inline constexpr std::size_t PrintedFloatSize = 1 + (std::numeric_limits<float>::max_exponent10 + 1) + 1 + MaxDecimals;

// Prints the number with 0 to MaxDecimals decimals. The text is in the buffer; infinity and NaN are constants, with the
// number's sign: "inf", "-inf", "nan", "-nan".
std::string_view printFixed(std::span<char, PrintedFloatSize> buffer, float value, int decimals);

} // namespace tvmeta
