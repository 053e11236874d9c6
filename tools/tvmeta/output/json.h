// JSON Lines: one object on each line.
#pragma once

#include "base/value.h"

#include <string>

// The object with the values of a record, without missing ones. Texts are bytes in any encoding: bytes that are not
// UTF-8 become U+FFFD. The line is ASCII, which every terminal shows correctly.
std::string jsonObject(const Record& record);
