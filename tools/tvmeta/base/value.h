// The value of a field, apart from how it is printed.
#pragma once

#include "base/words.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// Nothing, an integer, a number, a text or a list of texts.
using Value = std::variant<std::monostate, int64_t, double, std::string, std::vector<std::string>>;

struct NamedValue {
    std::string name;
    Value value;
};

// What a command prints of one photograph or picture.
using Record = std::vector<NamedValue>;

inline bool isMissing(const Value& value) {
    return std::holds_alternative<std::monostate>(value);
}

inline bool isNumber(const Value& value) {
    return std::holds_alternative<int64_t>(value) || std::holds_alternative<double>(value);
}

// The number of an integer or a number, else 0.
inline double numberOf(const Value& value) {
    const auto* integer = std::get_if<int64_t>(&value);
    const auto* number = std::get_if<double>(&value);
    return integer != nullptr ? static_cast<double>(*integer) : number != nullptr ? *number : 0;
}

// A text, or the texts of a list with commas between them; else empty.
inline std::string textOf(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    const auto* list = std::get_if<std::vector<std::string>>(&value);
    return list == nullptr ? "" : joined(*list);
}
