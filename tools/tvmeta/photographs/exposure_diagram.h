// The exposures of a set as a picture.
#pragma once

#include "photographs/photo_sets.h"

#include <string>

// An SVG element: an axis in stops from the middle exposure, and each photograph as a dot with its number in order of
// capture. Equal exposures are above each other.
std::string exposureDiagram(const PhotoSet& set);
