// Formats values in the notation of photographers.
#pragma once

#include "output/value.h"

#include <string>

// The value must not be missing.
std::string plainWords(const Value& value);
std::string exposureWords(const Value& value);    // 1/125
std::string apertureWords(const Value& value);    // f/2.8
std::string evWords(const Value& value);          // 12.3
std::string orientationWords(const Value& value); // rotate 90 degrees clockwise
std::string unitWords(const Value& value);        // inch
std::string sourceWords(const Value& value);      // image description
