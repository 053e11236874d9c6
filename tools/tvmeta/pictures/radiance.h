// Radiance HDR pictures for the library's statistics.
#pragma once

#include "pictures/light.h"

#include <optional>
#include <string>

// The pixels as they are in the file; none when it is no Radiance picture, or one with an exposure or colour
// correction. Throws Failure when it cannot be read.
std::optional<HdrPlanes> radiancePlanes(const std::string& path);
