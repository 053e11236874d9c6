// Settings: the numbers of a packet: their decimals, and the curves between them and the slots, each next to its
// inverse.
#pragma once

#include "settings/methods.h"

#include <cmath>
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

struct NumberForm {
    int decimals;
    float (*fromSlot)(float);
    float (*toSlot)(float);
};

// A table, since gcc for ARM makes writable data of a switch that returns functions.
struct FormOfKind {
    ValueKind kind;
    NumberForm form;
};
inline constexpr FormOfKind FormsOfKinds[] = {{ValueKind::Fraction, {6, unchanged, unchanged}},
                                              {ValueKind::Gamma, {2, gammaFromSlider, sliderFromGamma}},
                                              {ValueKind::Clip, {3, clipFromSlot, slotFromClip}}};
inline constexpr NumberForm PlainForm = {1, unchanged, unchanged};

// The form of a kind whose values are numbers in a current packet.
constexpr const NumberForm& numberForm(ValueKind kind) {
    for (const FormOfKind& row : FormsOfKinds) {
        if (row.kind == kind) {
            return row.form;
        }
    }
    return PlainForm;
}

} // namespace tvmeta
