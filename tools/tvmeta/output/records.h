// Records as comma-separated values (RFC 4180) and as JSON Lines.
#pragma once

#include "base/value.h"

#include <string>

// One record with its line end; missing values are empty, numbers exact. In texts control characters and bytes that are
// not UTF-8 become \xNN, and one that a spreadsheet would treat as a formula is preceded by an apostrophe.
std::string csvRecord(const Record& record);

// The names of its values, with a line end.
std::string csvHeader(const Record& record);

// The object with the values of a record, without missing ones. Texts are bytes in any encoding: bytes that are not
// UTF-8 become U+FFFD. The line is ASCII, which every terminal shows correctly.
std::string jsonObject(const Record& record);
