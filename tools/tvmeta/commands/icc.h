// ICC profiles, in files or in photographs.
#pragma once

#include "output/files.h"

#include <string>

// The profile of a file: a profile or a photograph. Throws Failure if there is none or it is not for RGB.
Bytes readRgbProfile(const std::string& path);
