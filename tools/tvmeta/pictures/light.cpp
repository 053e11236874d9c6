#include "pictures/light.h"

#include "pictures/half.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

template <typename Sample, typename Convert>
void convertRow(const Picture& picture, size_t row, std::span<float> samples, const Convert& convert) {
    const auto colours = static_cast<size_t>(colourChannels(picture));
    const auto channels = static_cast<size_t>(picture.channels);
    const unsigned char* pixel = picture.samples.data() + row * rowBytes(picture);
    for (size_t i = 0; i < samples.size(); i += colours) {
        for (size_t colour = 0; colour < colours; ++colour) {
            Sample sample;
            std::memcpy(&sample, pixel + colour * sizeof sample, sizeof sample);
            samples[i + colour] = convert(sample);
        }
        pixel += channels * sizeof(Sample);
    }
}

} // namespace

void readSamples(const Picture& picture, size_t row, std::span<float> samples) {
    const auto same = [](auto sample) { return static_cast<float>(sample); };
    switch (picture.depth) {
    case Depth::Integer8:
        return convertRow<uint8_t>(picture, row, samples, same);
    case Depth::Integer16:
        return convertRow<uint16_t>(picture, row, samples, same);
    case Depth::Float16:
        return convertRow<uint16_t>(picture, row, samples, floatFromHalf);
    case Depth::Float32:
        return convertRow<float>(picture, row, samples, same);
    }
}

LightRule::LightRule(const Picture& picture, bool isLinear)
    : measured(picture), colours(static_cast<size_t>(colourChannels(picture))), white(whiteOf(picture)) {
    const std::optional<ProfileLight> profile =
        picture.colours || picture.profile.empty() ? std::nullopt : profileLight(picture.profile);
    std::optional<ColourSpace> space = picture.colours;
    if (!space && !profile) {
        const bool isUnreadable = !picture.profile.empty();
        space = isFloat(picture.depth) ? ColourSpace{.name = "linear"} : ColourSpace{"sRGB, assumed", Transfer::Srgb};
        space->name += isUnreadable ? " (ICC profile not usable)" : "";
    }
    label = isLinear                                                 ? "linear (--linear)"
            : !space                                                 ? "ICC profile"
            : picture.colours && space->transfer == Transfer::Linear ? "linear"
                                                                     : space->name;
    if (picture.gain) {
        label += ", " + picture.gainMap->name() + (picture.gainMap->isForStandardRange ? " (not applied)" : "");
    }
    factors = profile            ? profile->weights
              : space->primaries ? luminanceWeights(*space->primaries).value_or(Bt709Weights)
                                 : Bt709Weights;
    if (profile && !isLinear) {
        curves = profile->curves;
    } else if (!isLinear && space->transfer != Transfer::Linear) {
        curves.fill([space](double sample) { return linearLight(*space, sample); });
    }
    for (size_t i = 0; i < tables.size() && !isFloat(picture.depth); ++i) {
        tables[i].resize(static_cast<size_t>(white) + 1);
        for (size_t sample = 0; sample < tables[i].size(); ++sample) {
            const double part = static_cast<double>(sample) / double{white};
            tables[i][sample] = static_cast<float>(curves[i] ? curves[i](part) : part);
        }
    }
}

void LightRule::apply(size_t row, std::span<float> samples) const {
    const bool isInteger = !tables[0].empty();
    for (size_t colour = 0; colour < colours; ++colour) {
        if (!isInteger && !curves[colour]) {
            continue;
        }
        for (size_t i = colour; i < samples.size(); i += colours) {
            samples[i] = isInteger ? tables[colour][static_cast<size_t>(samples[i])]
                                   : static_cast<float>(curves[colour](double{samples[i]}));
        }
    }
    if (measured.gain && !measured.gainMap->isForStandardRange) {
        applyGain(row, samples);
    }
}

// The map covers the picture; between the centres of its samples it is interpolated in both directions.
void LightRule::applyGain(size_t row, std::span<float> light) const {
    struct Place {
        size_t first, second;
        float share; // of the second
    };
    const Picture& map = *measured.gain;
    const auto placeOf = [](size_t pixel, int32_t pixels, int32_t samples) {
        const double position = (static_cast<double>(pixel) + 0.5) * samples / pixels - 0.5;
        const double inside = std::clamp(position, 0.0, static_cast<double>(samples - 1));
        const auto first = static_cast<size_t>(inside);
        return Place{first, std::min(first + 1, static_cast<size_t>(samples - 1)),
                     static_cast<float>(inside - static_cast<double>(first))};
    };
    const auto mapColours = static_cast<size_t>(colourChannels(map));
    const Place down = placeOf(row, measured.height, map.height);
    std::vector<float> upper(static_cast<size_t>(map.width) * mapColours), lower(upper.size());
    readSamples(map, down.first, upper);
    readSamples(map, down.second, lower);
    for (size_t i = 0; i < upper.size(); ++i) {
        upper[i] = std::lerp(upper[i], lower[i], down.share) / whiteOf(map);
    }
    for (size_t i = 0; i < light.size(); ++i) {
        const Place across = placeOf(i / colours, measured.width, map.width);
        const size_t colour = mapColours == 1 ? 0 : i % colours;
        const float sample = std::lerp(upper[across.first * mapColours + colour],
                                       upper[across.second * mapColours + colour], across.share);
        light[i] = measured.gainMap->channels[i % colours].apply(light[i], sample);
    }
}
