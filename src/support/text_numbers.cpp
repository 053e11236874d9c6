#include "support/text_numbers.h"

#include "support/text_search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <system_error>

namespace tvmeta {

namespace {

constexpr bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

void skipSpace(std::string_view& text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
}

// Removes a sign from the start of the text. Returns whether it was a minus.
bool takeSign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    takeOneOf(text, "+-");
    return negative;
}

// The words for infinity and NaN. An 'i' after "inf" must begin the rest of "infinity".
constexpr std::optional<float> scanWord(std::string_view text) {
    if (beginsWithWord(text, "nan")) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    if (beginsWithWord(text, "infinity") || (beginsWithWord(text, "inf") && !beginsWithWord(text, "infi"))) {
        return std::numeric_limits<float>::infinity();
    }
    return std::nullopt;
}

// A float, and a number halfway between two floats, has at most 113 decimal digits. Of the digits after that many it
// only matters whether one of them is not 0.
constexpr std::size_t MaxDigits = 120;

// The number DIGITS * 10^exponent; without digits, 0.
struct Decimal {
    char text[MaxDigits + 8]; // the digits, from the first that is not 0; room for one more, the exponent and its end
    std::size_t size = 0;
    std::int64_t exponent = 0;
};

// The exponent after a letter, which may be missing. Limited, so that no sum with the length of a text overflows.
std::int64_t scanExponent(std::string_view text, std::string_view letter) {
    constexpr std::int64_t Limit = INT64_MAX / 2;
    if (!beginsWithWord(text, letter) || (text.size() > 1 && isSpace(text[1]))) {
        return 0;
    }
    text.remove_prefix(1);
    return std::clamp(scanInteger(text).value_or(0), -Limit, Limit);
}

Decimal scanDecimal(std::string_view text) {
    Decimal number;
    bool fraction = false;
    bool excess = false; // a digit that matters was dropped
    std::size_t i = 0;
    for (; i < text.size() && (isDigit(text[i]) || (text[i] == '.' && !fraction)); ++i) {
        if (text[i] == '.') {
            fraction = true;
            continue;
        }
        const bool full = number.size == MaxDigits;
        if (full) {
            excess = excess || text[i] != '0';
        } else if (number.size > 0 || text[i] != '0') {
            number.text[number.size++] = text[i];
        }
        number.exponent += (full ? 1 : 0) - (fraction ? 1 : 0);
    }
    if (excess) {
        number.text[number.size++] = '1';
        --number.exponent;
    }
    text.remove_prefix(i);
    number.exponent += scanExponent(text, "e");
    return number;
}

// The float nearest to a number. It is written without a decimal point, which is all that depends on the locale.
float convert(Decimal& number) {
    constexpr std::int64_t OutOfRange = 999; // with any number of digits
    const std::int64_t exponent = std::clamp(number.exponent, -OutOfRange, OutOfRange);
    char* end = number.text + number.size;
    *end++ = 'e';
    end = std::to_chars(end, std::end(number.text), exponent).ptr;
#ifdef __cpp_lib_to_chars
    float value = 0.0F;
    if (std::from_chars(number.text, end, value).ec == std::errc::result_out_of_range) {
        const bool large = exponent + static_cast<std::int64_t>(number.size) > 0;
        value = large ? std::numeric_limits<float>::infinity() : 0.0F;
    }
    return value;
#else // libc++ has no from_chars for floats
    *end = '\0';
    return std::strtof(number.text, nullptr);
#endif
}

// The number after "0x": digits, and an exponent of 2 after a 'p'. A point alone counts as 0, as in glibc.
std::optional<float> scanHexadecimal(std::string_view text) {
    constexpr std::uint64_t Full = 1 << 28; // more bits than a float has
    constexpr std::int64_t OutOfRange = 999;
    std::uint64_t digits = 0;
    std::int64_t exponent = 0;
    bool fraction = false;
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        unsigned digit = 0;
        if (text[i] == '.' && !fraction) {
            fraction = true;
            continue;
        }
        if (std::from_chars(&text[i], &text[i] + 1, digit, 16).ec != std::errc()) {
            break;
        }
        const bool full = digits >= Full; // then the digit matters only by not being 0
        digits = full ? digits | (digit != 0 ? 1 : 0) : digits * 16 + digit;
        exponent += (full ? 4 : 0) - (fraction ? 4 : 0);
    }
    if (i == 0) {
        return std::nullopt;
    }
    exponent = std::clamp(exponent + scanExponent(textFrom(text, i), "p"), -OutOfRange, OutOfRange);
    return static_cast<float>(std::ldexp(static_cast<double>(digits), static_cast<int>(exponent))); // rounds once
}

// The integer nearest to a value below 2^63, ties to even, as printf rounds an exact decimal expansion.
std::uint64_t roundHalfEven(double value) {
    const std::uint64_t whole = static_cast<std::uint64_t>(value);
    const double rest = value - static_cast<double>(whole);
    const bool up = rest > 0.5 || (rest == 0.5 && whole % 2 == 1);
    return whole + (up ? 1 : 0);
}

constexpr double PowersOfTen[MaxDecimals + 1] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};

// Below this a float times 10^6 fits 63 bits. The product of a float's 24 significant bits and the 20 bits of 10^6 is
// exact in double precision, so one rounding to an integer gives the digits of printf.
constexpr double FastLimit = 1e12;

} // namespace

std::optional<std::int64_t> scanInteger(std::string_view& text) {
    skipSpace(text);
    const bool negative = takeSign(text);
    if (text.empty() || !isDigit(text.front())) {
        return std::nullopt;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (error == std::errc::result_out_of_range) {
        value = INT64_MAX;
    }
    return negative ? -value : value;
}

std::optional<float> scanFloat(std::string_view text) {
    skipSpace(text);
    const bool negative = takeSign(text);
    std::optional<float> value = scanWord(text);
    const std::size_t firstDigit = text.starts_with('.') ? 1 : 0;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        value = scanHexadecimal(text.substr(2));
    } else if (!value && text.size() > firstDigit && isDigit(text[firstDigit])) {
        Decimal number = scanDecimal(text);
        value = number.size > 0 ? convert(number) : 0.0F;
    }
    if (value && negative) {
        value = -*value;
    }
    return value;
}

std::string_view printFixed(std::span<char, PrintedFloatSize> buffer, float value, int decimals) {
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
