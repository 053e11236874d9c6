// The light of a picture by stops, as bars in a terminal and as an SVG picture.
#pragma once

#include "pictures/luminance_histogram.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

// Pixels by their stops from the maximum of the picture.
struct StopHistogram {
    double start = 0;           // stops at the lower end of the first bin, a multiple of the step
    double step = 1;            // stops of a bin; the last one ends at the maximum, 0
    std::vector<double> shares; // of the pixels above zero
};

// The bins have the smallest step from `step`, doubled until there are at most `maxBins`. There must be luminances.
StopHistogram stopHistogram(std::span<const LuminanceHistogram::Bin> luminances, double step, size_t maxBins);

// A line for each bin, with a bar, in at most `width` columns.
std::string histogramBars(const StopHistogram& histogram, int width);

struct PlotMark {
    std::string label;
    double stops = 0; // from the maximum
};

// A whole SVG file without scripts, for light and dark surroundings.
std::string histogramPlot(const StopHistogram& histogram, const std::string& title, std::span<const PlotMark> marks);
