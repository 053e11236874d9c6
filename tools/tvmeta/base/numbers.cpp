#include "base/numbers.h"

#include <charconv>
#include <cmath>

namespace {

template <typename Number>
std::optional<Number> parse(std::string_view text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && parsed == end ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<double> parseNumber(std::string_view text) {
    const std::optional<double> number = parse<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<int64_t> parseWholeNumber(std::string_view text) {
    return parse<int64_t>(text);
}
