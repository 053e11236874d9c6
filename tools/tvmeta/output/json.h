// JSON Lines: one object on each line.
#pragma once

#include "output/value.h"

#include <span>
#include <string>

struct NamedValue {
    std::string name;
    Value value;
};

// The object with these members, without those that are missing. Texts are bytes in any encoding, JSON is UTF-8:
// other bytes become U+FFFD. The line is ASCII, so no terminal can misread it.
std::string jsonObject(std::span<const NamedValue> members);
