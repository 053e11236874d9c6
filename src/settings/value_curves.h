// Settings: the kinds of values in a packet: their decimals, and the curves between numbers and slots, each next to its
// inverse.
#pragma once

#include "settings/methods.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>

namespace tvmeta {

// Processors and C libraries differ in the sign of NaN, which packets show. Here a NaN argument keeps its sign, and an
// argument outside the curve's domain gives -NaN.
inline float curveResult(float argument, double result) {
    if (std::isnan(result)) {
        const bool negative = !std::isnan(argument) || std::signbit(argument);
        return std::copysign(std::numeric_limits<float>::quiet_NaN(), negative ? -1.0F : 1.0F);
    }
    return static_cast<float>(result);
}

// Gamma: slider positions 0, 50 and 100 are gamma 2, 1 and 0.5.
inline float gammaFromSlider(float slider) {
    return curveResult(slider, std::exp((50.0 - static_cast<double>(slider)) * std::numbers::ln2 / 50.0));
}

inline float sliderFromGamma(float gamma) {
    return curveResult(gamma, (std::log(static_cast<double>(gamma)) / -std::numbers::ln2 + 1.0) * 50.0);
}

// Clip: a power curve from 0 to 10 on both sides.
inline float clipFromSlot(float slot) {
    constexpr double Exponent = 0.3263790046007694;
    return curveResult(slot, 10.0 * std::pow(static_cast<double>(slot) / 10.0, Exponent));
}

inline float slotFromClip(float clip) {
    constexpr double Exponent = 3.063922574380088; // the reciprocal of the inverse's
    return curveResult(clip, std::pow(static_cast<double>(clip) / 10.0, Exponent) * 10.0);
}

inline float unchanged(float number) {
    return number;
}

// A kind of value at the interface, and the numbers of it in a current packet.
struct KindForm {
    ValueKind kind;
    std::int32_t publicKind;
    int decimals;
    float (*fromSlot)(float);
    float (*toSlot)(float);
};

inline constexpr KindForm KindForms[] = {
    {ValueKind::Number, TVMETA_NUMBER, 1, unchanged, unchanged},
    {ValueKind::VersionedNumber, TVMETA_NUMBER, 1, unchanged, unchanged},
    {ValueKind::Fraction, TVMETA_FRACTION, 6, unchanged, unchanged},
    {ValueKind::Gamma, TVMETA_GAMMA, 2, gammaFromSlider, sliderFromGamma},
    {ValueKind::Clip, TVMETA_CLIP, 3, clipFromSlot, slotFromClip},
    {ValueKind::Microcontrast, TVMETA_NUMBER, 1, unchanged, unchanged},
    {ValueKind::SmoothingMode, TVMETA_SMOOTHING_MODE, 1, unchanged, unchanged},
    {ValueKind::Smoothing, TVMETA_SMOOTHING, 1, unchanged, unchanged},
    {ValueKind::Panorama, TVMETA_YES_NO, 1, unchanged, unchanged},
};

constexpr const KindForm& formOf(ValueKind kind) {
    return KindForms[static_cast<std::size_t>(kind)];
}
static_assert(std::ranges::all_of(KindForms, [](const KindForm& row) { return &formOf(row.kind) == &row; }));

} // namespace tvmeta
