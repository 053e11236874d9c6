#include "output/csv.h"

#include "output/text.h"

#include <array>
#include <charconv>
#include <string_view>

namespace {

// Spreadsheets treat texts that start with these characters as formulas. Coordinates, such as "-33.8, 151.2", are
// harmless.
bool isFormula(std::string_view text) {
    const bool isSuspect = !text.empty() && std::string_view("=+-@").find(text[0]) != std::string_view::npos;
    return isSuspect && text.find_first_not_of("0123456789., -") != std::string_view::npos;
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
    if (const auto* text = std::get_if<std::string>(&value)) {
        const std::string shown = printable(*text);
        return (isFormula(shown) ? "'" : "") + shown;
    }
    if (const auto* integer = std::get_if<int64_t>(&value)) {
        return digitsOf(*integer);
    }
    const auto* number = std::get_if<double>(&value);
    return number == nullptr ? "" : digitsOf(*number);
}
