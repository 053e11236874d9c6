// A diagram of the exposures of a set.
#pragma once

#include "photographs/photo_sets.h"

#include <string>

// An SVG element: an axis in stops from the middle exposure, and each photograph as a dot with its number in order of
// capture. Dots of equal exposures are stacked.
std::string exposureDiagram(const PhotoSet& set);
