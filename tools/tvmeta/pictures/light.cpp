#include "pictures/light.h"

#include "pictures/half.h"
#include "pictures/radiance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr size_t Colours = 3;
constexpr std::array<size_t, Colours> PlaneOf = {2, 1, 0}; // red, green, blue
constexpr size_t ExponentPlane = 3;

template <typename Sample, typename Convert>
void readSamples(const Picture& picture, size_t row, std::span<float> light, const Convert& convert) {
    const auto channels = static_cast<size_t>(picture.channels);
    const bool isGrey = colourChannels(picture) == 1;
    const unsigned char* pixel = picture.samples.data() + row * rowBytes(picture);
    for (size_t i = 0; i < light.size(); i += Colours) {
        for (size_t colour = 0; colour < Colours; ++colour) {
            Sample sample;
            std::memcpy(&sample, pixel + (isGrey ? 0 : colour) * sizeof sample, sizeof sample);
            light[i + colour] = convert(sample);
        }
        pixel += channels * sizeof(Sample);
    }
}

// The exponent for which the brightest colour uses all 8 bits of its mantissa; 0 (no light) for a pixel that is black,
// too dark, or not finite.
uint32_t sharedExponent(std::span<const float, Colours> pixel) {
    constexpr uint32_t InfiniteField = 0xFF;
    constexpr uint32_t BiasDifference = 6; // 126 of the float's mantissa below 1, less 128, plus 8 bits
    const float brightest = std::max({pixel[0], pixel[1], pixel[2]});
    const bool isFinite = std::isfinite(pixel[0] + pixel[1] + pixel[2]) ||
                          std::ranges::all_of(pixel, [](float colour) { return std::isfinite(colour); });
    if (!isFinite || !(brightest > 0)) {
        return 0;
    }
    const uint32_t field = std::bit_cast<uint32_t>(brightest) >> 23 & InfiniteField;
    return field > BiasDifference ? field - BiasDifference : 0;
}

unsigned char mantissa(float colour, uint32_t exponent) {
    const float scaled = colour * std::bit_cast<float>((255 - exponent) << 23); // 2^(128 - exponent)
    return static_cast<unsigned char>(std::clamp(std::nearbyint(scaled), 0.0F, 255.0F));
}

size_t lightPerRow(const Picture& picture) {
    return Colours * static_cast<size_t>(picture.width);
}

float largestFinite(const Picture& picture) {
    std::vector<float> light(lightPerRow(picture));
    float largest = 0;
    for (size_t row = 0; row < static_cast<size_t>(picture.height); ++row) {
        readLight(picture, row, light);
        for (const float value : light) {
            largest = std::isfinite(value) ? std::max(largest, value) : largest;
        }
    }
    return largest;
}

} // namespace

void readLight(const Picture& picture, size_t row, std::span<float> light) {
    switch (picture.depth) {
    case Depth::Integer8:
        return readSamples<uint8_t>(picture, row, light, [](uint8_t sample) { return sample / 255.0F; });
    case Depth::Integer16:
        return readSamples<uint16_t>(picture, row, light, [](uint16_t sample) { return sample / 65535.0F; });
    case Depth::Float16:
        return readSamples<uint16_t>(picture, row, light, floatFromHalf);
    case Depth::Float32:
        return readSamples<float>(picture, row, light, [](float sample) { return sample; });
    }
}

HdrPlanes sharedExponentPlanes(const Picture& picture) {
    const auto width = static_cast<size_t>(picture.width);
    const auto height = static_cast<size_t>(picture.height);
    HdrPlanes planes = {picture.width, picture.height, Bytes(HdrPlanes::Count * width * height)};
    std::vector<float> light(lightPerRow(picture));
    for (size_t row = 0; row < height; ++row) {
        readLight(picture, row, light);
        unsigned char* const first = planes.bytes.data() + row * HdrPlanes::Count * width;
        for (size_t x = 0; x < width; ++x) {
            const std::span<const float, Colours> pixel(light.data() + Colours * x, Colours);
            const uint32_t exponent = sharedExponent(pixel);
            first[ExponentPlane * width + x] = static_cast<unsigned char>(exponent);
            for (size_t colour = 0; colour < Colours && exponent > 0; ++colour) {
                first[PlaneOf[colour] * width + x] = mantissa(pixel[colour], exponent);
            }
        }
    }
    return planes;
}

HdrPlanes loadPlanes(const std::string& path, const Picture& picture) {
    std::optional<HdrPlanes> planes = radiancePlanes(path);
    return planes ? std::move(*planes) : sharedExponentPlanes(picture);
}

uint64_t clippedPixels(const Picture& picture) {
    const float white = isFloat(picture.depth) ? largestFinite(picture) : 1.0F;
    std::vector<float> light(lightPerRow(picture));
    uint64_t clipped = 0;
    for (size_t row = 0; row < static_cast<size_t>(picture.height); ++row) {
        readLight(picture, row, light);
        for (size_t i = 0; i < light.size(); i += Colours) {
            clipped += light[i] >= white || light[i + 1] >= white || light[i + 2] >= white ? 1 : 0;
        }
    }
    return clipped;
}
