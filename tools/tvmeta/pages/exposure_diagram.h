// A diagram of the exposures of a set.
#pragma once

#include <span>
#include <string>

// An SVG element: an axis in stops from the middle exposure, and each photograph as a dot with its number in order of
// capture. Dots of equal exposures are stacked.
std::string exposureDiagram(std::span<const double> offsets);
