// What tvmeta info tells about a photograph, field by field.
#pragma once

#include "photographs/photo.h"

#include <nlohmann/json.hpp>

#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <vector>

// A photograph among others.
struct Shot {
    Photo photo;
    std::optional<std::time_t> taken;
    std::optional<std::time_t> first; // when the first of several was taken
};

// How a value is written for people, and what of it can be spared where the table is too wide.
enum class Form { Plain, Exposure, Aperture, Text, Path };

struct Field {
    const char* key;                                   // for --fields and JSON
    const char* label;                                 // in lists
    const char* heading;                               // in tables
    nlohmann::ordered_json (*value)(const Shot& shot); // null if the photograph lacks it
    const char* unit = "";
    Form form = Form::Plain;
};

std::span<const Field> allFields();

using FieldList = std::vector<const Field*>;

// The fields of these keys, in this order. Throws WrongCommandLine for an unknown one.
FieldList fieldsNamed(const std::vector<std::string>& keys);

// A value that is not null as lists and as tables show it.
std::string listText(const Field& field, const nlohmann::ordered_json& value);
std::string cellText(const Field& field, const nlohmann::ordered_json& value);

// When a photograph was taken, if it tells.
std::optional<std::time_t> captureTime(const ExifInfo& info);
