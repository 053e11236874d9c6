// The linear light of a picture.
#pragma once

#include "pictures/picture.h"
#include "pictures/profiles.h"

#include <span>
#include <string>
#include <vector>

// The numbers of the colour samples in a row: grey, or red, green and blue of each pixel, as the picture stores them.
void readSamples(const Picture& picture, size_t row, std::span<float> samples);

// The number of white: the largest one of integers, 1 of floats.
constexpr float whiteOf(const Picture& picture) {
    return picture.depth == Depth::Integer8 ? 255.0F : picture.depth == Depth::Integer16 ? 65535.0F : 1.0F;
}

// Converts the samples of a picture to linear light, in which 1 is white. Uses the colours that the format states, else
// the ICC profile; without both, integers are sRGB, floats linear, and the luminance that of BT.709.
class LightRule {
  public:
    // Linear: the samples are linear light already.
    LightRule(const Picture& picture, bool isLinear);

    // What is done, for a reader: "sRGB, assumed".
    const std::string& name() const { return label; }
    const Weights& weights() const { return factors; }

    // Replaces the samples of a row by light.
    void apply(size_t row, std::span<float> samples) const;

  private:
    void applyGain(size_t row, std::span<float> light) const;

    const Picture& measured;
    std::string label;
    Weights factors = Bt709Weights;
    size_t colours;
    float white;
    std::array<std::function<double(double)>, 3> curves = {}; // of floats; without one the samples are linear
    std::array<std::vector<float>, 3> tables = {};            // of integers, by sample
};
