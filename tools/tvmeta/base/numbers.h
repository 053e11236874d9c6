// Numbers in text. The locale is ignored.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// A finite decimal number such as -1.5 or 2e3; none if the text contains anything else.
std::optional<double> parseNumber(std::string_view text);

// A whole decimal number without sign, or with a minus; none if the text contains anything else.
std::optional<int64_t> parseWholeNumber(std::string_view text);
