#include "pictures/light_statistics.h"

#include "base/numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

constexpr float MaxFloat = std::numeric_limits<float>::max();

// The largest finite sample of each colour, and its pixels.
struct Brightest {
    std::array<float, 3> samples = {};
    std::array<uint64_t, 3> pixels = {};

    void add(size_t colour, float sample) {
        if (sample > samples[colour] && sample <= MaxFloat) {
            samples[colour] = sample;
            pixels[colour] = 0;
        }
        pixels[colour] += sample == samples[colour] ? 1 : 0;
    }
};

void countUnusual(float sample, LightStatistics& statistics) {
    statistics.nanSamples += std::isnan(sample) ? 1 : 0;
    statistics.infiniteSamples += std::isinf(sample) ? 1 : 0;
    statistics.negativeSamples += std::isfinite(sample) && sample < 0 ? 1 : 0;
}

// The luminance of a pixel; NaN if one of its samples is not finite.
template <size_t Colours>
float luminanceOf(const float* pixel, const Weights& weights, LightStatistics& statistics) {
    double luminance = 0;
    bool isUsual = true;
    for (size_t colour = 0; colour < Colours; ++colour) {
        isUsual = isUsual && pixel[colour] >= 0 && pixel[colour] <= MaxFloat;
        luminance += (Colours == 1 ? 1.0 : weights[colour]) * double{pixel[colour]};
    }
    for (size_t colour = 0; colour < Colours && !isUsual; ++colour) {
        countUnusual(pixel[colour], statistics);
        if (!std::isfinite(pixel[colour])) {
            luminance = std::numeric_limits<double>::quiet_NaN();
        }
    }
    return static_cast<float>(luminance > double{MaxFloat} ? double{MaxFloat} : luminance);
}

// Collects the luminances above zero.
template <size_t Colours>
Brightest collect(const Picture& picture, const LightRule& rule, LightStatistics& statistics) {
    Brightest brightest;
    std::vector<float> row(Colours * static_cast<size_t>(picture.width));
    for (size_t y = 0; y < static_cast<size_t>(picture.height); ++y) {
        readSamples(picture, y, row);
        for (size_t i = 0; i < row.size(); i += Colours) {
            for (size_t colour = 0; colour < Colours; ++colour) {
                brightest.add(colour, row[i + colour]);
            }
        }
        rule.apply(y, row);
        for (size_t i = 0; i < row.size(); i += Colours) {
            const float luminance = luminanceOf<Colours>(row.data() + i, rule.weights(), statistics);
            statistics.black += luminance == 0 ? 1 : 0;
            if (luminance > 0) {
                statistics.luminances.push_back(luminance);
            }
        }
    }
    return brightest;
}

// The sample from which on each colour is clipped: white in integers; in floats the largest sample, if it is that of
// the brightest hundredth of a percent of the pixels, of two at least.
std::array<float, 3> clippingPoints(const Picture& picture, const Brightest& brightest, uint64_t pixels) {
    constexpr uint64_t PlateauShare = 10000;
    const uint64_t plateau = std::max<uint64_t>((pixels + PlateauShare - 1) / PlateauShare, 2);
    std::array<float, 3> points = {};
    for (size_t i = 0; i < points.size(); ++i) {
        const bool isPlateau = brightest.samples[i] > 0 && brightest.pixels[i] >= plateau;
        points[i] = !isFloat(picture.depth) ? whiteOf(picture)
                    : isPlateau             ? brightest.samples[i]
                                            : std::numeric_limits<float>::infinity();
    }
    return points;
}

uint64_t clippedPixels(const Picture& picture, const Brightest& brightest, uint64_t pixels) {
    const auto colours = static_cast<size_t>(colourChannels(picture));
    const std::array<float, 3> points = clippingPoints(picture, brightest, pixels);
    if (std::ranges::none_of(std::array<size_t, 3>{0, 1, 2},
                             [&](size_t i) { return brightest.samples[i] >= points[i]; })) {
        return 0;
    }
    uint64_t clipped = 0;
    std::vector<float> row(colours * static_cast<size_t>(picture.width));
    for (size_t y = 0; y < static_cast<size_t>(picture.height); ++y) {
        readSamples(picture, y, row);
        for (size_t i = 0; i < row.size(); i += colours) {
            bool isClipped = false;
            for (size_t colour = 0; colour < colours; ++colour) {
                isClipped = isClipped || (row[i + colour] >= points[colour] && row[i + colour] <= MaxFloat);
            }
            clipped += isClipped ? 1 : 0;
        }
    }
    return clipped;
}

// Numbers above zero are in the order of their bits. Groups with equal first 16 bits are counted; only the members of
// those that contain a percentile are searched.
void findPercentiles(LightStatistics& statistics) {
    constexpr size_t Groups = size_t{1} << 16;
    const auto groupOf = [](float luminance) { return std::bit_cast<uint32_t>(luminance) >> 16; };
    std::vector<uint64_t> counts(Groups);
    for (const float luminance : statistics.luminances) {
        ++counts[groupOf(luminance)];
    }
    std::vector<char> isSearched(Groups);
    std::array<uint64_t, LightStatistics::Percentiles.size()> places = {}; // among the members
    uint64_t before = 0, skipped = 0;
    size_t group = 0;
    for (size_t i = 0; i < places.size(); ++i) {
        const auto thousandths = static_cast<uint64_t>(LightStatistics::Percentiles[i]);
        const uint64_t rank = (statistics.lit * thousandths + 999) / 1000 - 1;
        for (; rank - before >= counts[group]; ++group) {
            before += counts[group];
            skipped += isSearched[group] == 0 ? counts[group] : 0;
        }
        isSearched[group] = 1;
        places[i] = rank - skipped;
    }
    std::vector<float> members;
    std::ranges::copy_if(statistics.luminances, std::back_inserter(members),
                         [&](float luminance) { return isSearched[groupOf(luminance)] != 0; });
    for (size_t i = 0; i < places.size(); ++i) {
        const auto place = members.begin() + static_cast<std::ptrdiff_t>(places[i]);
        std::ranges::nth_element(members, place);
        statistics.percentiles[i] = double{*place};
    }
}

void summarise(LightStatistics& statistics) {
    double sum = 0, stops = 0;
    for (const float luminance : statistics.luminances) {
        sum += double{luminance};
        stops += std::log2(double{luminance});
    }
    const auto [least, largest] = std::ranges::minmax(statistics.luminances);
    const auto lit = static_cast<double>(statistics.lit);
    statistics.minimum = double{least};
    statistics.maximum = double{largest};
    statistics.mean = sum / lit;
    statistics.average = std::exp2(stops / lit);
    findPercentiles(statistics);
}

} // namespace

LightStatistics measureLight(const Picture& picture, const LightRule& rule) {
    LightStatistics statistics = {.pixels =
                                      static_cast<uint64_t>(picture.width) * static_cast<uint64_t>(picture.height)};
    statistics.luminances.reserve(statistics.pixels);
    const Brightest brightest = (colourChannels(picture) == 1 ? collect<1> : collect<3>)(picture, rule, statistics);
    statistics.lit = statistics.luminances.size();
    statistics.clipped = clippedPixels(picture, brightest, statistics.pixels);
    if (statistics.lit > 0) {
        summarise(statistics);
    }
    return statistics;
}

StopHistogram stopHistogram(std::span<const float> luminances, double reference, size_t maxBins) {
    const auto stopsOf = [reference](float luminance) { return std::log2(double{luminance} / reference); };
    const auto [least, largest] = std::ranges::minmax(luminances);
    const double lowest = stopsOf(least), highest = stopsOf(largest);
    StopHistogram histogram = {.step = doubledStep(highest - lowest, static_cast<double>(maxBins) - 1)};
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
