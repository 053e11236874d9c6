// Comma-separated values (RFC 4180).
#pragma once

#include "base/value.h"

#include <span>
#include <string>

// One record with its line end; missing values are empty, numbers exact. In texts control characters and bytes that are
// not UTF-8 become \xNN, and one that a spreadsheet would treat as a formula is preceded by an apostrophe.
std::string csvRecord(std::span<const Value> fields);
