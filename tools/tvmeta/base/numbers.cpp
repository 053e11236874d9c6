#include "base/numbers.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>

namespace {

template <typename Number>
std::optional<Number> take(std::string_view& text) {
    Number number = 0;
    const auto [parsed, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(static_cast<double>(number))) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<size_t>(parsed - text.data()));
    return number;
}

template <typename Number>
std::optional<Number> parse(std::string_view text) {
    const std::optional<Number> number = take<Number>(text);
    return text.empty() ? number : std::nullopt;
}

} // namespace

std::optional<double> parseNumber(std::string_view text) {
    return parse<double>(text);
}

std::optional<double> takeNumber(std::string_view& text) {
    return take<double>(text);
}

std::optional<int64_t> parseWholeNumber(std::string_view text) {
    return parse<int64_t>(text);
}

std::string shortNumber(double number) {
    return fmt::format("{:g}", number + 0.0);
}

std::string hundredths(double number) {
    return fmt::format("{:.2f}", std::fabs(number) < 0.005 ? 0.0 : number);
}

double doubledStep(double range, double maxSteps) {
    double step = 1;
    while (range / step > maxSteps) {
        step *= 2;
    }
    return step;
}
