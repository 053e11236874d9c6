// HDR buffers of 24 megapixels with several distributions of exponents.
#pragma once

#include "support/bytes.h"

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
