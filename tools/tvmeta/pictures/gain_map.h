// The gain map of a JPEG: a second, smaller JPEG after it, which makes a picture with a greater range of it. Described
// by an XMP packet (namespace hdrgm) or a binary block (ISO 21496-1).
#pragma once

#include <array>
#include <optional>
#include <string>

struct GainMap {
    // From the sample r of the map, 0 to 1, and the linear light of the base picture, in this order:
    //   stops = minimum + (maximum - minimum) * r^(1 / gamma)
    //   light = (base + baseOffset) * 2^stops - offset
    struct Channel {
        double minimum = 0;
        double maximum = 0;
        double gamma = 1;
        double baseOffset = 1.0 / 64;
        double offset = 1.0 / 64;

        float apply(float base, float sample) const;
    };

    long place = 0;                       // of its JPEG in the file
    std::array<Channel, 3> channels = {}; // of red, green and blue
    bool isForStandardRange = false;      // the base has the greater range, and the map takes it away

    double stops() const;     // the largest gain, to tenths
    std::string name() const; // "gain map, +2.3 stops"
};

// Empty for a file without one, or with one whose description is damaged.
std::optional<GainMap> findGainMap(const std::string& path);
