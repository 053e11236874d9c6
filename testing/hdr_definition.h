// The HDR statistics by definition: pixel by pixel in row order, each value added to one double.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace test {

struct HdrStatistics {
    std::array<float, 3> results; // minimum, maximum, mean
    double sum;
    std::uint64_t count;
};

inline HdrStatistics hdrByDefinition(std::size_t width, std::size_t height, const unsigned char* pixels) {
    float scale[256];
    for (int exponent = 0; exponent < 256; ++exponent) {
        scale[exponent] = static_cast<float>(std::ldexp(1.0, exponent - 128));
    }
    float minimum = 99999997952.0F;
    float maximum = 0.0F;
    double sum = 0.0;
    std::uint64_t count = 0;
    for (std::size_t y = 0; y < height; ++y) {
        const unsigned char* const blue = pixels + y * 4 * width;
        const unsigned char* const green = blue + width;
        const unsigned char* const red = green + width;
        const unsigned char* const exponent = red + width;
        for (std::size_t x = 0; x < width; ++x) {
            if (exponent[x] == 0) {
                continue;
            }
            const int luminance = (19 * blue[x] + 183 * green[x] + 54 * red[x]) >> 8;
            const float value = static_cast<float>(luminance) * scale[exponent[x]];
            if (value > 0.0F && value < minimum) {
                minimum = value;
            }
            if (value > maximum) {
                maximum = value;
            }
            sum += static_cast<double>(value);
            ++count;
        }
    }
    const auto divisor = static_cast<double>(static_cast<float>(count));
    return {{minimum, maximum, count > 0 ? static_cast<float>(sum / divisor) : 0.0F}, sum, count};
}

} // namespace test
