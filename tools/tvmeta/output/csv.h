// Comma-separated values (RFC 4180).
#pragma once

#include "base/value.h"

#include <string>

// One record with its line end; missing values are empty, numbers exact. In texts control characters and bytes that are
// not UTF-8 become \xNN, and one that a spreadsheet would treat as a formula is preceded by an apostrophe.
std::string csvRecord(const Record& record);

// The names of its values, with a line end.
std::string csvHeader(const Record& record);
