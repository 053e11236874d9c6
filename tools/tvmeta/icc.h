// ICC profiles, by themselves or in TIFF files.
#pragma once

#include "files.h"

#include <string>

// A profile from a file. Throws Failure when the file holds none, or one for other colours than RGB.
Bytes readRgbProfile(const std::string& path);
