// ICC profiles for the colour spaces that pictures describe in other ways.
#pragma once

#include "output/files.h"

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

// A matrix profile without a tone curve, or that of sRGB. Empty when there is none for these points, or the build lacks
// the library that makes them.
Bytes linearRgbProfile(const Chromaticities& chromaticities);
Bytes srgbProfile();
