#include "output/csv.h"

#include "base/numbers.h"
#include "base/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace {

// Spreadsheets treat texts that start with these characters as formulas, except single numbers.
constexpr std::string_view FormulaStarts = "=+-@";

bool isNumber(std::string_view text) {
    return parseNumber(text.substr(text.starts_with('+') ? 1 : 0)).has_value();
}

// Coordinates and offsets of time, such as "-33.8, 151.2" and "+02:00".
bool isPairOfNumbers(std::string_view text, std::string_view separator) {
    const size_t middle = std::min(text.find(separator), text.size());
    return isNumber(text.substr(0, middle)) && isNumber(text.substr(std::min(middle + separator.size(), text.size())));
}

std::string textField(const std::string& value) {
    const std::string text = printable(value);
    const bool isSuspect = !text.empty() && FormulaStarts.find(text[0]) != std::string_view::npos;
    const bool isHarmless = isNumber(text) || isPairOfNumbers(text, ", ") || isPairOfNumbers(text, ":");
    return isSuspect && !isHarmless ? "'" + text : text;
}

std::string quoted(const std::string& field) {
    if (field.find_first_of(",\"") == std::string::npos) {
        return field;
    }
    std::string text = "\"";
    for (const char c : field) {
        text += c == '"' ? "\"\"" : std::string(1, c);
    }
    return text + "\"";
}

std::string fieldOf(const Value& value) {
    const auto* integer = std::get_if<int64_t>(&value);
    const auto* number = std::get_if<double>(&value);
    return integer != nullptr  ? fmt::to_string(*integer)
           : number != nullptr ? fmt::format("{}", *number)
                               : quoted(textField(textOf(value)));
}

} // namespace

std::string csvRecord(std::span<const Value> fields) {
    std::string record;
    for (const Value& field : fields) {
        record += (&field == &fields.front() ? "" : ",") + fieldOf(field);
    }
    return record + "\r\n";
}
