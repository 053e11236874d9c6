// The samples of a picture as linear light, and in the form of the library's statistics.
#pragma once

#include "pictures/picture.h"

#include <cstdint>
#include <span>
#include <string>

// Shared-exponent pixels for hdrMinMax(): per row one plane each of blue, green and red mantissas and of exponents.
// A mantissa m with exponent e is m * 2^(e - 128); e = 0 means no light.
struct HdrPlanes {
    static constexpr size_t Count = 4;

    int32_t width = 0;
    int32_t height = 0;
    Bytes bytes = {};
};

// Red, green and blue of each pixel of a row; grey samples three times. Integers are treated as linear light, 1 is
// white.
void readLight(const Picture& picture, size_t row, std::span<float> light);

// Converts the pixels to 8-bit mantissas. A pixel with a colour that is not finite has no light.
HdrPlanes sharedExponentPlanes(const Picture& picture);

// The planes of a picture file. Those of a Radiance file are used unchanged unless they need a correction.
HdrPlanes loadPlanes(const std::string& path, const Picture& picture);

// Counts clipped pixels: a colour is white (integers) or the largest finite value of the picture (floats).
uint64_t clippedPixels(const Picture& picture);
