// A histogram of the luminances of a picture.
#pragma once

#include "pictures/light.h"

#include <cstdint>
#include <vector>

// Luminances with the weights of hdrMinMax(): 8 bits and an exponent, so the histogram is exact.
class LuminanceHistogram {
  public:
    struct Bin {
        double luminance;
        uint64_t pixels;
    };

    explicit LuminanceHistogram(const HdrPlanes& planes);

    // Luminances above zero that occur, in ascending order.
    const std::vector<Bin>& bins() const { return sorted; }

    // Pixels with a luminance above zero.
    uint64_t litPixels() const { return lit; }

    // The smallest luminance that `percent` of the lit pixels do not exceed. There must be lit pixels.
    double percentile(double percent) const;

    // The mean in stops, as a luminance: the geometric mean of the lit pixels.
    double average() const;

  private:
    std::vector<Bin> sorted;
    uint64_t lit = 0;
};
