// The description of ICC profiles (ICC.1).
#pragma once

#include "system/files.h"

#include <string>

// The name of a profile of any version, in English if it has several; empty if it has none.
std::string profileName(const Bytes& profile);

// Version, class and colour space from the header of 128 bytes.
std::string profileVersion(const Bytes& profile);
std::string profileClass(const Bytes& profile);
std::string profileColourSpace(const Bytes& profile);
