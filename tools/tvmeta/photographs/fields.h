// The fields of a photograph that tvmeta info shows.
#pragma once

#include "output/value.h"
#include "photographs/field_words.h"
#include "photographs/photo.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

// A photograph among others.
struct Shot {
    Photo photo;
    std::optional<CivilTime> first = {}; // when the first of several was taken
};

struct Field {
    // How much of a value a table can shorten.
    enum class Kind { Plain, Date, Text, Path };

    const char* key;                  // in command lines, JSON and CSV
    const char* label;                // in lists
    const char* heading;              // in tables
    Value (*value)(const Shot& shot); // missing if the photograph lacks it
    const char* unit = "";
    std::string (*words)(const Value& value) = plainWords;
    Kind kind = Kind::Plain;
};

std::span<const Field> allFields();

using FieldList = std::vector<const Field*>;

// The field of this key. Throws WrongCommandLine if there is none.
const Field* fieldNamed(const std::string& key);

// A value that is not missing, for people.
inline std::string readable(const Field& field, const Value& value) {
    return field.words(value) + field.unit;
}
