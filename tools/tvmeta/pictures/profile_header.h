// What an ICC profile says of itself (ICC.1, profile header).
#pragma once

#include "system/files.h"

#include <string>

// Throws Failure unless these bytes start like a profile.
void requireProfile(const std::string& path, const Bytes& profile);

// The name of a profile of any version, in English if it has several; empty if it has none.
std::string profileName(const Bytes& profile);

std::string profileVersion(const Bytes& profile); // requires a header of 128 bytes
std::string profileClass(const Bytes& profile);
std::string profileColourSpace(const Bytes& profile); // "RGB", "GRAY"
