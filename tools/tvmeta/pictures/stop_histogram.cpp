#include "pictures/stop_histogram.h"

#include <algorithm>
#include <cmath>

StopHistogram stopHistogram(std::span<const float> luminances, double reference, size_t maxBins) {
    const auto stopsOf = [reference](float luminance) { return std::log2(double{luminance} / reference); };
    const auto [least, largest] = std::ranges::minmax(luminances);
    const double lowest = stopsOf(least), highest = stopsOf(largest);
    StopHistogram histogram;
    while ((highest - lowest) / histogram.step > static_cast<double>(maxBins) - 1) {
        histogram.step *= 2;
    }
    const auto binOf = [&histogram](double stops) { return std::ceil(stops / histogram.step) - 1; };
    const double first = binOf(lowest);
    histogram.start = first * histogram.step;
    histogram.shares.resize(static_cast<size_t>(binOf(highest) - first) + 1);
    for (const float luminance : luminances) {
        histogram.shares[static_cast<size_t>(binOf(stopsOf(luminance)) - first)] += 1;
    }
    for (double& share : histogram.shares) {
        share /= static_cast<double>(luminances.size());
    }
    return histogram;
}
