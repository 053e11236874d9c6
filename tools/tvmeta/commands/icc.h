// ICC profiles, by themselves or in photographs.
#pragma once

#include "output/files.h"

#include <string>

// The profile that a file is or holds. Throws Failure when the file holds none, or one for other colours than RGB.
Bytes readRgbProfile(const std::string& path);
