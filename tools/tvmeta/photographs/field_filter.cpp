#include "photographs/field_filter.h"

#include "base/failure.h"
#include "base/numbers.h"
#include "base/text.h"

#include <optional>
#include <string_view>

struct Operator {
    std::string_view name;
    bool (*accepts)(int order);
};

namespace {

// Longer operators first, because they contain the shorter ones.
constexpr Operator Operators[] = {
    {"!=", [](int order) { return order != 0; }}, {"<=", [](int order) { return order <= 0; }},
    {">=", [](int order) { return order >= 0; }}, {"=", [](int order) { return order == 0; }},
    {"<", [](int order) { return order < 0; }},   {">", [](int order) { return order > 0; }},
};

// Parses numbers, also in the notation of photographers: 1/125, f/2.8.
std::optional<double> parsePhotoNumber(std::string_view text) {
    if (text.starts_with("f/")) {
        return parseNumber(text.substr(2));
    }
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) {
        return parseNumber(text);
    }
    const auto numerator = parseNumber(text.substr(0, slash)), denominator = parseNumber(text.substr(slash + 1));
    return numerator && denominator && *denominator != 0 ? std::optional(*numerator / *denominator) : std::nullopt;
}

// The value that a field is compared with; missing for an empty text.
Value wantedValue(const Field& field, const std::string& text) {
    if (text.empty() || field.kind != Field::Kind::Number) {
        return text.empty() ? Value() : text;
    }
    if (const std::optional<double> number = parsePhotoNumber(text)) {
        return *number;
    }
    throw WrongCommandLine("expected a number for " + std::string(field.key) + ", found '" + text + "'");
}

} // namespace

int compareValues(const Value& a, const Value& b) {
    if (isNumber(a) && isNumber(b)) {
        const double first = numberOf(a), second = numberOf(b);
        return static_cast<float>(first) == static_cast<float>(second) ? 0 : first < second ? -1 : 1;
    }
    if (isNumber(a) || isNumber(b)) {
        return isNumber(a) ? -1 : 1; // numbers sort before texts
    }
    const std::string first = textOf(a), second = textOf(b);
    return first == second ? 0 : naturalLess(first, second) ? -1 : 1;
}

FieldFilter::FieldFilter(const std::string& condition) {
    const size_t place = condition.find_first_of("!<>=");
    for (const Operator& known : Operators) {
        if (place != std::string::npos && std::string_view(condition).substr(place).starts_with(known.name)) {
            field = fieldNamed(condition.substr(0, place));
            relation = &known;
            wanted = wantedValue(*field, condition.substr(place + known.name.size()));
            return;
        }
    }
    throw WrongCommandLine("expected a condition such as isoSpeed>800, with =, !=, <, <=, > or >=, found '" +
                           condition + "'");
}

bool FieldFilter::accepts(const Shot& shot) const {
    const Value value = field->value(shot);
    if (isMissing(value) || isMissing(wanted)) {
        return relation->name == (isMissing(value) == isMissing(wanted) ? "=" : "!=");
    }
    return relation->accepts(compareValues(value, wanted));
}
