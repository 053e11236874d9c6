// HDR buffers of 24 megapixels with several distributions of exponents.
#pragma once

#include "support/bytes.h"

#include <bit>
#include <cmath>
#include <span>

namespace bench {

inline constexpr std::size_t HdrWidth = 6000;
inline constexpr std::size_t HdrHeight = 4000;

using HdrBuffer = std::vector<unsigned char>;
using Row = std::span<unsigned char>;

// Replaces the random bytes of row y by exponents.
using FillExponents = void (*)(Row exponents, std::size_t y);

// Maps random bytes to a range.
template <int First, int Last>
void fillRange(Row exponents, std::size_t /*y*/) {
    for (unsigned char& exponent : exponents) {
        exponent = static_cast<unsigned char>(First + exponent * (Last - First + 1) / 256);
    }
}

// As in a photograph: light and shade, with small differences between adjacent pixels.
inline void fillSmoothly(Row exponents, std::size_t y) {
    constexpr double Middle = 125.0;
    constexpr double Contrast = 13.5;
    const double rowLight = Contrast * std::cos(static_cast<double>(y) / 500.0);
    for (std::size_t x = 0; x < exponents.size(); ++x) {
        const double light = Middle + rowLight * std::sin(static_cast<double>(x) / 700.0);
        const double noise = static_cast<double>(exponents[x]) / 128.0 - 1.0;
        exponents[x] = static_cast<unsigned char>(light + noise + 0.5);
    }
}

// As in a room with windows: bright stretches of 100 pixels 12 stops above the rest, so that a few hundred adjacent
// pixels span about 17 exponents.
inline void fillWithWindows(Row exponents, std::size_t y) {
    for (std::size_t x = 0; x < exponents.size(); ++x) {
        const bool bright = (x + y / 8) % 400 < 100;
        exponents[x] = static_cast<unsigned char>((bright ? 139 : 127) + exponents[x] % 5);
    }
}

// As the noise of a sensor: half of the pixels have the highest exponent, a quarter two stops less, and so on to 16.
inline void fillWithDarkNoise(Row exponents, std::size_t /*y*/) {
    for (unsigned char& exponent : exponents) {
        exponent = static_cast<unsigned char>(136 - 2 * std::countl_zero(exponent));
    }
}

inline void leaveAny(Row /*exponents*/, std::size_t /*y*/) {}

inline HdrBuffer hdrBuffer(FillExponents fill) {
    Random random;
    HdrBuffer buffer = randomBuffer(HdrWidth * HdrHeight * 4, random);
    for (std::size_t y = 0; y < HdrHeight; ++y) {
        fill(Row(buffer).subspan((y * 4 + 3) * HdrWidth, HdrWidth), y);
    }
    return buffer;
}

} // namespace bench
