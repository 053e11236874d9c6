// Formats values in the notation of photographers.
#pragma once

#include "base/value.h"

#include <string>

// The value must not be missing.
std::string plainWords(const Value& value);
std::string exposureWords(const Value& value);    // 1/125
std::string apertureWords(const Value& value);    // f/2.8
std::string evWords(const Value& value);          // 12.3
std::string biasWords(const Value& value);        // +0.3
std::string orientationWords(const Value& value); // rotate 90 degrees clockwise
std::string exposureModeWords(const Value& value);
std::string exposureProgramWords(const Value& value);
std::string meteringModeWords(const Value& value);
std::string flashWords(const Value& value);
std::string whiteBalanceWords(const Value& value);
