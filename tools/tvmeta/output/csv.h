// Comma-separated values (RFC 4180).
#pragma once

#include <span>
#include <string>

// One record with its line end; fields are quoted where they must be.
std::string csvRecord(std::span<const std::string> fields);
