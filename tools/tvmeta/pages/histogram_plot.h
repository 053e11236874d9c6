// The histogram of a picture by stops, as bars in a terminal and as an SVG picture.
#pragma once

#include "pictures/light_statistics.h"

#include <span>
#include <string>

enum class Scale { Linear, Logarithmic };

// A line for each bin, with a bar, in at most `width` columns.
std::string histogramBars(const StopHistogram& histogram, Scale scale, int width);

struct PlotMark {
    std::string label;
    double stops = 0; // from the reference
};

// A whole SVG file without scripts, for light and dark surroundings.
std::string histogramPlot(const StopHistogram& histogram, Scale scale, const std::string& title,
                          std::span<const PlotMark> marks);
