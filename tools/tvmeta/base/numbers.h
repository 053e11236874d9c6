// Numbers in text. The locale is ignored.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// A finite decimal number such as -1.5 or 2e3; none if the text contains anything else.
std::optional<double> parseNumber(std::string_view text);

// The same at the start of a text, from which it is removed; the text is unchanged if it starts with anything else.
std::optional<double> takeNumber(std::string_view& text);

// A whole decimal number without sign, or with a minus; none if the text contains anything else.
std::optional<int64_t> parseWholeNumber(std::string_view text);

// A number in six significant digits at most, and one with two decimals; neither is a negative zero.
std::string shortNumber(double number);
std::string hundredths(double number);

// The smallest power of two from 1 that divides a range into at most `maxSteps`.
double doubledStep(double range, double maxSteps);
