// The light of a picture by stops, as bars in a terminal and as an SVG picture.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

// Pixels by their stops from a reference luminance.
struct StopHistogram {
    double start = 0;           // stops at the lower end of the first bin, a multiple of the step
    double step = 1;            // stops of a bin; its upper end belongs to it, its lower end to the bin before
    std::vector<double> shares; // of the pixels above zero
};

// The bins have one stop, doubled until there are at most `maxBins`. There must be luminances, all above zero.
StopHistogram stopHistogram(std::span<const float> luminances, double reference, size_t maxBins);

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
