#include "output/csv.h"

#include "output/text.h"

#include <array>
#include <charconv>
#include <string_view>

namespace {

// Spreadsheets treat texts that start with these characters as formulas. Coordinates and offsets, such as
// "-33.8, 151.2" and "+02:00", are harmless.
bool isFormula(std::string_view text) {
    const bool isSuspect = !text.empty() && std::string_view("=+-@").find(text[0]) != std::string_view::npos;
    return isSuspect && text.find_first_not_of("0123456789.,:+ -") != std::string_view::npos;
}

template <typename Number>
std::string digitsOf(Number number) {
    std::array<char, 32> digits;
    return {digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr};
}

} // namespace

std::string csvRecord(std::span<const std::string> fields) {
    std::string record;
    for (const std::string& field : fields) {
        record += &field == &fields.front() ? "" : ",";
        if (field.find_first_of(",\"\r\n") == std::string::npos) {
            record += field;
            continue;
        }
        record += '"';
        for (const char c : field) {
            record += c == '"' ? "\"\"" : std::string(1, c);
        }
        record += '"';
    }
    return record + "\r\n";
}

std::string csvField(const Value& value) {
    if (const auto* integer = std::get_if<int64_t>(&value)) {
        return digitsOf(*integer);
    }
    if (const auto* number = std::get_if<double>(&value)) {
        return digitsOf(*number);
    }
    const std::string shown = printable(textOf(value));
    return (isFormula(shown) ? "'" : "") + shown;
}
