#include "output/records.h"

#include "base/mapped.h"
#include "base/numbers.h"
#include "base/text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>
#include <type_traits>

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

std::string fieldOf(const NamedValue& named) {
    const auto* integer = std::get_if<int64_t>(&named.value);
    const auto* number = std::get_if<double>(&named.value);
    return integer != nullptr  ? fmt::to_string(*integer)
           : number != nullptr ? fmt::format("{}", *number)
                               : quoted(textField(textOf(named.value)));
}

} // namespace

std::string csvRecord(const Record& record) {
    return fmt::format("{}\r\n", fmt::join(mapped<std::string>(record, fieldOf), ","));
}

std::string csvHeader(const Record& record) {
    return fmt::format("{}\r\n", fmt::join(mapped<std::string>(record, &NamedValue::name), ","));
}

std::string jsonObject(const Record& record) {
    using nlohmann::ordered_json;
    ordered_json object = ordered_json::object();
    for (const NamedValue& member : record) {
        std::visit(
            [&](const auto& value) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
                    object[member.name] = value;
                }
            },
            member.value);
    }
    return object.dump(-1, ' ', true, ordered_json::error_handler_t::replace);
}
