// What samples mean, for formats that state it without an ICC profile.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

// CIE 1931 xy of an RGB colour space.
struct Chromaticities {
    struct Point {
        double x;
        double y;
    };

    Point red;
    Point green;
    Point blue;
    Point white;
};

constexpr Chromaticities Bt709Primaries = {{0.64, 0.33}, {0.3, 0.6}, {0.15, 0.06}, {0.3127, 0.329}};

// How samples encode linear light.
enum class Transfer { Linear, Gamma, Srgb, Bt709, Pq, Hlg };

struct ColourSpace {
    std::string name; // for messages
    Transfer transfer = Transfer::Linear;
    std::optional<Chromaticities> primaries = {}; // unknown: measured as BT.709
    double gamma = 1;                             // of Transfer::Gamma: light is the sample to this power
    std::array<uint8_t, 4> cicp = {};             // its code points (ITU-T H.273), 0 if it was not stated by them
};

// The luminance is the sum of red, green and blue with these weights.
using Weights = std::array<double, 3>;
constexpr Weights Bt709Weights = {0.2126, 0.7152, 0.0722};

// The row for Y of the matrix from linear RGB to XYZ; empty if the points have none.
std::optional<Weights> luminanceWeights(const Chromaticities& points);

// The linear light of a sample, both from 0 to 1. Of PQ 1 is 10000 cd/m2; of HLG it is the brightest light of the
// scene.
double linearLight(const ColourSpace& space, double sample);
