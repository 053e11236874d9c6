// ICC profiles for colour spaces that pictures describe without a profile.
#pragma once

#include "system/files.h"

// CIE 1931 xy of a linear RGB colour space.
struct Chromaticities {
    struct Point {
        double x;
        double y;
    };

    Point red;
    Point green;
    Point blue;
    Point white;
};

// A matrix profile without a tone curve, or that of sRGB. Empty if there is none for these points or the build
// has no library for it.
Bytes linearRgbProfile(const Chromaticities& chromaticities);
Bytes srgbProfile();
