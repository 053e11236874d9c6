// The contents of ICC profiles, through Little CMS: made for colour spaces that pictures describe without one, and
// read.
#pragma once

#include "pictures/colour_space.h"
#include "system/files.h"

#include <array>
#include <functional>
#include <optional>
#include <string>

// A matrix profile for RGB samples. Empty if there is none for the colour space or the build has no library for it.
Bytes profileOf(const ColourSpace& space);

// From samples to linear light, as far as a matrix or grey profile describes it.
struct ProfileLight {
    std::array<std::function<double(double)>, 3> curves; // of red, green and blue, or of grey three times
    Weights weights = Bt709Weights;                      // relative to the white of the picture
};

// Empty for a profile of another kind, a damaged one, or without a library for it.
std::optional<ProfileLight> profileLight(const Bytes& profile);

// Throws Failure unless these bytes start like a profile.
void requireProfile(const std::string& path, const Bytes& profile);

// The name of a profile of any version, in English if it has several; empty if it has none.
std::string profileName(const Bytes& profile);

std::string profileVersion(const Bytes& profile); // requires a header of 128 bytes
std::string profileClass(const Bytes& profile);
std::string profileColourSpace(const Bytes& profile); // "RGB", "GRAY"
