// The fields of a photograph that tvmeta info shows.
#pragma once

#include "base/value.h"
#include "photographs/photo.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

// A photograph and its context.
struct Shot {
    Photo photo;
    std::optional<CivilTime> first = {}; // capture time of the first photograph
};

// A number or text as it is. The value must not be missing.
std::string plainWords(const Value& value);

struct Field {
    // Tables shorten dates, texts and paths, each in its own way.
    enum class Kind { Number, Word, Date, Text, Path };

    const char* key;                  // in command lines, JSON and CSV
    const char* label;                // in lists
    const char* heading;              // in tables
    Value (*value)(const Shot& shot); // missing if the photograph lacks it
    const char* unit = "";
    std::string (*words)(const Value& value) = plainWords;
    Kind kind = Kind::Number;
};

std::span<const Field> allFields();
std::vector<std::string> fieldKeys();

using FieldList = std::vector<const Field*>;

// The field with this key. Throws WrongCommandLine if there is none.
const Field* fieldNamed(const std::string& key);

// The value as text; it must not be missing.
inline std::string readable(const Field& field, const Value& value) {
    return field.words(value) + field.unit;
}
