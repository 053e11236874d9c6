// Support: numbers in texts, as C's "%d", "%f" and "%.Nf" conversions scan and print them in the "C" locale, whatever
// the locale of the process is.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

// Scans a "%d" at the start of the text and removes it from there. A number beyond 64 bits saturates.
std::optional<std::int64_t> scanInteger(std::string_view& text) noexcept;

// Scans a "%f" at the start of the text. Infinity when the number is too large; hexadecimal numbers and the words for
// infinity and NaN are no numbers here, since no writer of packets produces them.
std::optional<float> scanFloat(std::string_view text) noexcept;

// Room for any float printed with up to six decimals: sign, 39 digits, point, decimals.
inline constexpr std::size_t PrintedFloatSize = 48;

// Prints the number with so many decimals (0 to 6) and returns the text within the buffer.
std::string_view printFixed(std::span<char, PrintedFloatSize> buffer, float value, int decimals) noexcept;

} // namespace tvmeta
