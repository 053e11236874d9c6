// Comma-separated values (RFC 4180).
#pragma once

#include "output/value.h"

#include <span>
#include <string>

// One record with its line end; quotes fields where necessary.
std::string csvRecord(std::span<const std::string> fields);

// A value as a field of a record. Control characters and bytes that are not UTF-8 become \xNN. A text that a
// spreadsheet would treat as a formula is preceded by an apostrophe. Numbers are exact.
std::string csvField(const Value& value);
