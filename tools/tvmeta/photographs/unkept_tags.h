// Metadata of a photograph that cannot be stored in a result.
#pragma once

#include "photographs/photo.h"

#include <string>
#include <vector>

// The names of these values, for a message; empty if there are none.
std::vector<std::string> unkeptValues(const OpenPhoto& photo, int64_t clamped);
