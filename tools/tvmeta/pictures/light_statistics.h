// Statistics of the luminance of a picture, and its light by stops.
#pragma once

#include "pictures/light.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

struct LightStatistics {
    // In thousandths.
    static constexpr std::array Percentiles = {1, 10, 500, 990, 999};

    uint64_t pixels = 0;
    uint64_t lit = 0; // pixels with a luminance above zero; the statistics are about these
    uint64_t black = 0;
    uint64_t clipped = 0;
    uint64_t nanSamples = 0;
    uint64_t infiniteSamples = 0;
    uint64_t negativeSamples = 0;
    double minimum = 0;
    double maximum = 0;
    double mean = 0;
    double average = 0; // the geometric mean: that of the stops
    std::array<double, Percentiles.size()> percentiles = {};
    std::vector<float> luminances = {}; // of the lit pixels, in no order
};

// Measures every pixel. Without a lit pixel the luminances are zero.
LightStatistics measureLight(const Picture& picture, const LightRule& rule);

// Pixels by their stops from a reference luminance.
struct StopHistogram {
    double start = 0;                // stops at the lower end of the first bin, a multiple of the step
    double step = 1;                 // stops of a bin; its upper end belongs to it, its lower end to the bin before
    std::vector<double> shares = {}; // of the pixels above zero
};

// The bins have one stop, doubled until there are at most `maxBins`. There must be luminances, all above zero.
StopHistogram stopHistogram(std::span<const float> luminances, double reference, size_t maxBins);
