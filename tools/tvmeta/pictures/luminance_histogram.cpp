#include "pictures/luminance_histogram.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t Luminances = 256;
constexpr size_t Exponents = 256;

// Pixels for each exponent and 8-bit luminance.
std::vector<uint64_t> countPixels(const HdrPlanes& planes) {
    std::vector<uint64_t> counts(Exponents * Luminances);
    const auto width = static_cast<size_t>(planes.width);
    for (size_t row = 0; row < planes.bytes.size(); row += HdrPlanes::Count * width) {
        const unsigned char* const blue = planes.bytes.data() + row;
        const unsigned char* const green = blue + width;
        const unsigned char* const red = green + width;
        const unsigned char* const exponent = red + width;
        for (size_t x = 0; x < width; ++x) {
            const unsigned luminance = (19U * blue[x] + 183U * green[x] + 54U * red[x]) >> 8;
            ++counts[exponent[x] * Luminances + luminance];
        }
    }
    return counts;
}

} // namespace

LuminanceHistogram::LuminanceHistogram(const HdrPlanes& planes) {
    constexpr int ExponentBias = 128;
    const std::vector<uint64_t> counts = countPixels(planes);
    for (size_t i = Luminances; i < counts.size(); ++i) { // exponent 0 means no light
        const auto luminance = static_cast<double>(i % Luminances);
        if (counts[i] > 0 && luminance > 0) {
            sorted.push_back({std::ldexp(luminance, static_cast<int>(i / Luminances) - ExponentBias), counts[i]});
            lit += counts[i];
        }
    }
    std::ranges::sort(sorted, {}, &Bin::luminance);
}

double LuminanceHistogram::percentile(double percent) const {
    const double wanted = std::ceil(percent / 100 * static_cast<double>(lit));
    double pixels = 0;
    const auto bin = std::ranges::find_if(sorted, [&](const Bin& candidate) {
        pixels += static_cast<double>(candidate.pixels);
        return pixels >= wanted;
    });
    return bin == sorted.end() ? sorted.back().luminance : bin->luminance;
}

double LuminanceHistogram::average() const {
    double stops = 0;
    for (const Bin& bin : sorted) {
        stops += static_cast<double>(bin.pixels) * std::log2(bin.luminance);
    }
    return std::exp2(stops / static_cast<double>(lit));
}
