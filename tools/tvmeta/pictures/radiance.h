// Radiance HDR pictures for the library's statistics.
#pragma once

#include "pictures/light.h"

#include <optional>
#include <string>

// The unconverted pixels of the file; empty if it is not a Radiance picture or has an exposure or colour correction.
// Throws Failure if it cannot be read.
std::optional<HdrPlanes> radiancePlanes(const std::string& path);
