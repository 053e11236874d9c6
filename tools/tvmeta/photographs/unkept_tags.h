// What of a photograph's metadata a result has no place for.
#pragma once

#include "photographs/photo.h"

#include <string>

// The unkept values by name, for a message; empty if all are kept.
std::string unkeptValues(const Photo& photo);
