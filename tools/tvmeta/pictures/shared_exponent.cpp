// From the pixels of the library's statistics, three mantissas with one exponent, to floats and back.

#include "pictures/image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

constexpr size_t Colours = 3;
constexpr std::array<size_t, Colours> PlaneOf = {2, 1, 0}; // red, green, blue
constexpr size_t ExponentPlane = 3;
constexpr int ExponentBias = 128;

using Pixel = std::array<float, Colours>;

// The exponent with which the brightest colour takes all 8 bits of its mantissa; 0, no light, for a pixel that is
// black, too dark, or not finite.
int sharedExponent(const Pixel& pixel) {
    constexpr int MantissaBits = 8;
    const float brightest = *std::ranges::max_element(pixel);
    const bool isFinite = std::ranges::all_of(pixel, [](float colour) { return std::isfinite(colour); });
    if (!isFinite || brightest <= 0) {
        return 0;
    }
    int exponent = 0;
    std::frexp(brightest, &exponent);
    return std::max(exponent - MantissaBits + ExponentBias, 0);
}

unsigned char mantissa(float colour, int exponent) {
    const float scaled = std::ldexp(colour, ExponentBias - exponent);
    return static_cast<unsigned char>(std::clamp(std::nearbyint(scaled), 0.0F, 255.0F));
}

} // namespace

Image floatImage(const HdrPlanes& planes) {
    const auto width = static_cast<size_t>(planes.width);
    std::vector<float> samples;
    for (size_t row = 0; row < planes.bytes.size(); row += HdrPlanes::Count * width) {
        for (size_t x = row; x < row + width; ++x) {
            const int exponent = planes.bytes[x + ExponentPlane * width];
            for (const size_t plane : PlaneOf) {
                const int value = exponent == 0 ? 0 : planes.bytes[x + plane * width];
                samples.push_back(std::ldexp(static_cast<float>(value), exponent - ExponentBias));
            }
        }
    }
    Image image = {planes.width, planes.height, Colours, Depth::Float32, Bytes(samples.size() * sizeof(float))};
    std::memcpy(image.samples.data(), samples.data(), image.samples.size());
    return image;
}

HdrPlanes sharedExponentPlanes(const Image& image) {
    const auto width = static_cast<size_t>(image.width);
    const size_t pixels = width * static_cast<size_t>(image.height);
    HdrPlanes planes = {image.width, image.height, Bytes(HdrPlanes::Count * pixels)};
    for (size_t i = 0; i < pixels; ++i) {
        Pixel pixel;
        std::memcpy(pixel.data(), &image.samples[i * sizeof pixel], sizeof pixel);
        const int exponent = sharedExponent(pixel);
        unsigned char* first = &planes.bytes[i / width * HdrPlanes::Count * width + i % width];
        first[ExponentPlane * width] = static_cast<unsigned char>(exponent);
        for (size_t colour = 0; colour < Colours && exponent > 0; ++colour) {
            first[PlaneOf[colour] * width] = mantissa(pixel[colour], exponent);
        }
    }
    return planes;
}
