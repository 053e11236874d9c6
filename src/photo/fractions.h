// Photo: fractions for values that a file has in another form.
#pragma once

#include "tvmeta_photo.h"

#include <cstdint>

namespace tvmeta {

// The fraction with the smallest denominator that differs from a positive value by less than `tolerance` of it, with
// terms of up to 31 bits; 0/0 if there is none.
tvmeta_Rational nearestFraction(double value, double tolerance);

constexpr double quotient(const tvmeta_Rational& fraction) {
    return static_cast<double>(fraction.numerator) / static_cast<double>(fraction.denominator);
}

} // namespace tvmeta
