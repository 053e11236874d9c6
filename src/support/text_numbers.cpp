#include "support/text_numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

namespace tvmeta {

namespace {

constexpr bool isSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

void skipSpace(std::string_view& text) noexcept {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
}

// Takes a sign off the text and tells whether it was a minus.
bool takeSign(std::string_view& text) noexcept {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

// Far beyond any text's digits, and far from overflow when they are added.
constexpr std::int64_t LargestExponent = INT64_MAX / 2;

// Whether a decimal number that no float can hold is too large, rather than too small: its decimal exponent tells.
bool isTooLarge(std::string_view number) noexcept {
    std::int64_t exponent = 0;
    bool significant = false;
    bool fraction = false;
    while (!number.empty() && (isDigit(number.front()) || number.front() == '.')) {
        const char c = number.front();
        number.remove_prefix(1);
        if (c == '.') {
            if (fraction) {
                break;
            }
            fraction = true;
            continue;
        }
        significant = significant || c != '0';
        if (significant && !fraction) {
            ++exponent;
        } else if (!significant && fraction) {
            --exponent;
        }
    }
    if (number.starts_with('e') || number.starts_with('E')) {
        number.remove_prefix(1);
        const bool isBlank = !number.empty() && isSpace(number.front()); // which no exponent begins with
        const std::int64_t written = isBlank ? 0 : scanInteger(number).value_or(0);
        exponent += std::clamp<std::int64_t>(written, -LargestExponent, LargestExponent);
    }
    return exponent > 0;
}

// The integer nearest to a value below 2^63, ties to even, as printf rounds an exact decimal expansion.
std::uint64_t roundHalfEven(double value) noexcept {
    const std::uint64_t whole = static_cast<std::uint64_t>(value);
    const double rest = value - static_cast<double>(whole);
    const bool up = rest > 0.5 || (rest == 0.5 && whole % 2 == 1);
    return whole + (up ? 1 : 0);
}

// Whether the text begins with a word of lower-case letters, in any case.
constexpr bool beginsWithWord(std::string_view text, std::string_view word) noexcept {
    constexpr int CaseBit = 'a' ^ 'A';
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(), [](char letter, char c) {
               return c == letter || c == (letter ^ CaseBit);
           });
}

// The words for infinity and NaN. An 'i' after "inf" must begin the rest of "infinity".
constexpr std::optional<float> scanWord(std::string_view text) noexcept {
    if (beginsWithWord(text, "nan")) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    if (beginsWithWord(text, "infinity") || (beginsWithWord(text, "inf") && !beginsWithWord(text, "infi"))) {
        return std::numeric_limits<float>::infinity();
    }
    return std::nullopt;
}

constexpr double PowersOfTen[] = {1, 10, 100, 1000, 10'000, 100'000, 1'000'000};

// Below this a float times 10^6 fits 63 bits. Up to there, the product of a float's 24 significant bits and the 20 bits
// of 10^6 is exact in double precision, so that one rounding to an integer gives the very digits of printf.
constexpr double FastLimit = 1e12;

// A plain decimal number as texts mostly have it. Digits up to 2^24, and powers of ten up to 10^10 (the table ends
// before), are floats without rounding, so that one division gives the float nearest to the number.
std::optional<float> scanShortDecimal(std::string_view text) noexcept {
    constexpr std::uint32_t LargestDigits = 1U << std::numeric_limits<float>::digits;
    constexpr std::size_t LongestFraction = std::size(PowersOfTen) - 1;
    std::uint32_t digits = 0;
    std::size_t i = 0;
    std::size_t fraction = 0; // how many digits behind the point, once it has been seen
    bool point = false;
    for (; i < text.size(); ++i) {
        if (isDigit(text[i])) {
            digits = digits * 10 + static_cast<std::uint32_t>(text[i] - '0');
            fraction += point ? 1 : 0;
        } else if (text[i] == '.' && !point) {
            point = true;
        } else {
            break;
        }
        if (digits > LargestDigits || fraction > LongestFraction) {
            return std::nullopt;
        }
    }
    const bool isExponent = i < text.size() && (text[i] == 'e' || text[i] == 'E');
    if (isExponent) {
        return std::nullopt;
    }
    return static_cast<float>(digits) / static_cast<float>(PowersOfTen[fraction]);
}

} // namespace

std::optional<std::int64_t> scanInteger(std::string_view& text) noexcept {
    skipSpace(text);
    const bool negative = takeSign(text);
    if (text.empty() || !isDigit(text.front())) {
        return std::nullopt;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (error == std::errc::result_out_of_range) {
        value = std::numeric_limits<std::int64_t>::max();
    }
    return negative ? -value : value;
}

std::optional<float> scanFloat(std::string_view text) noexcept {
    skipSpace(text);
    const bool negative = takeSign(text);
    if (const std::optional<float> value = scanWord(text)) {
        return negative ? -*value : *value;
    }
    const bool leadsWithPoint = text.starts_with('.');
    if (text.size() <= (leadsWithPoint ? 1U : 0U) || !isDigit(text[leadsWithPoint ? 1 : 0])) {
        return std::nullopt;
    }
    if (const std::optional<float> value = scanShortDecimal(text)) {
        return negative ? -*value : *value;
    }
    float value = 0.0F;
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), value).ec;
    if (error == std::errc::result_out_of_range) {
        value = isTooLarge(text) ? std::numeric_limits<float>::infinity() : 0.0F;
    } else if (error != std::errc()) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

std::string_view printFixed(std::span<char, PrintedFloatSize> buffer, float value, int decimals) noexcept {
    if (!std::isfinite(value)) {
        const std::string_view word = std::isnan(value) ? "-nan" : "-inf";
        return word.substr(std::signbit(value) ? 0 : 1);
    }
    const double magnitude = std::fabs(static_cast<double>(value));
    char* const end = buffer.data() + buffer.size();
    if (magnitude >= FastLimit) {
        const auto printed =
            std::to_chars(buffer.data(), end, static_cast<double>(value), std::chars_format::fixed, decimals);
        return {buffer.data(), static_cast<std::size_t>(printed.ptr - buffer.data())};
    }
    std::uint64_t digits = roundHalfEven(magnitude * PowersOfTen[decimals]);
    char* out = end;
    for (int place = 0; place <= decimals || digits > 0; ++place) {
        if (place == decimals && decimals > 0) {
            *--out = '.';
        }
        *--out = static_cast<char>('0' + digits % 10);
        digits /= 10;
    }
    if (std::signbit(value)) {
        *--out = '-';
    }
    return {out, static_cast<std::size_t>(end - out)};
}

} // namespace tvmeta
