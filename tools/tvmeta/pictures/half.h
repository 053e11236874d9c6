// 16-bit floats (IEEE 754 binary16), for which compilers have no standard type.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

constexpr float LargestHalf = 65504;

inline float floatFromHalf(uint16_t half) {
    const float magnitude = std::bit_cast<float>((half & 0x7FFFU) << 13) * 0x1p112F; // scales subnormals, too
    uint32_t bits = std::bit_cast<uint32_t>(magnitude) | (half & 0x8000U) << 16;
    if ((half & 0x7C00U) == 0x7C00U) {
        bits |= 0x7F800000U; // infinity or NaN
    }
    return std::bit_cast<float>(bits);
}

// Rounds to nearest, ties to even. Values out of range become the largest finite number, because an infinite pixel
// would spoil every later calculation.
inline uint16_t halfFromFloat(float value) {
    constexpr float SmallestNormal = 0x1p-14F;
    const auto sign = static_cast<uint16_t>(std::bit_cast<uint32_t>(value) >> 16 & 0x8000U);
    if (std::isnan(value)) {
        return sign | 0x7E00U;
    }
    const float magnitude = std::min(std::fabs(value), LargestHalf);
    if (magnitude < SmallestNormal) {
        return static_cast<uint16_t>(sign | static_cast<uint16_t>(std::nearbyint(magnitude * 0x1p24F)));
    }
    const auto bits = std::bit_cast<uint32_t>(magnitude);
    const uint32_t rounded = bits + 0xFFFU + (bits >> 13 & 1U);
    return static_cast<uint16_t>(sign | ((rounded - (112U << 23)) >> 13));
}
