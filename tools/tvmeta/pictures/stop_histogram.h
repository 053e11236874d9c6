// The light of a picture by stops.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

// Pixels by their stops from a reference luminance.
struct StopHistogram {
    double start = 0;           // stops at the lower end of the first bin, a multiple of the step
    double step = 1;            // stops of a bin; its upper end belongs to it, its lower end to the bin before
    std::vector<double> shares; // of the pixels above zero
};

// The bins have one stop, doubled until there are at most `maxBins`. There must be luminances, all above zero.
StopHistogram stopHistogram(std::span<const float> luminances, double reference, size_t maxBins);
