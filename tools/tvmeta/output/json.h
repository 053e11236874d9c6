// JSON Lines: one object on each line.
#pragma once

#include "base/value.h"

#include <span>
#include <string>

struct NamedValue {
    std::string name;
    Value value;
};

// The object with these members, without missing ones. Texts are bytes in any encoding: bytes that are not UTF-8 become
// U+FFFD. The line is ASCII, which every terminal shows correctly.
std::string jsonObject(std::span<const NamedValue> members);
