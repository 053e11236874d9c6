#include "photographs/writer_records.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

constexpr int32_t MaxTerm = std::numeric_limits<int32_t>::max();

// Readers divide in single precision.
bool givesBack(double numerator, double denominator, float value) {
    return numerator >= 1 && denominator >= 1 && numerator <= MaxTerm && denominator <= MaxTerm &&
           static_cast<float>(numerator) / static_cast<float>(denominator) == value;
}

// The library rounds to hundredths each time that a result is saved.
void keepExactly(float value, int32_t (&rational)[2]) {
    const Fraction fraction = simplestFraction(value).value_or(Fraction{0, 0});
    rational[0] = fraction.numerator;
    rational[1] = fraction.denominator;
}

double quotient(const uint32_t* rational) {
    return rational[1] == 0 ? 0 : static_cast<double>(rational[0]) / rational[1];
}

bool isWritten(const uint32_t* rational) {
    return rational[0] > 0 && rational[0] <= MaxTerm && rational[1] > 0 && rational[1] <= MaxTerm;
}

// The first number of a group that is below 1: 1/80 of an hour or a degree is 45 seconds, 1/800 is 4.5 and so on, all
// exact in decimals. For smaller values it is the smallest fraction, which means 0.
Fraction smallFirst(double seconds, double& rest) {
    double share = 45;
    int32_t denominator = 80;
    while (share > seconds && denominator <= MaxTerm / 10) {
        share /= 10;
        denominator *= 10;
    }
    const bool isZero = share > seconds;
    rest = isZero ? 0 : seconds - share;
    return {1, isZero ? MaxTerm : denominator};
}

// The writers omit a group of degrees or hours, minutes and seconds whose first number is 0 or above 2^31. Here a part
// of the minutes and seconds becomes the first number.
void keepGroup(const uint32_t (&source)[6], int32_t (&group)[6]) {
    if (source[1] == 0 || isWritten(source)) {
        return;
    }
    constexpr int32_t Microseconds = 1'000'000;
    const double value = quotient(source) + quotient(source + 2) / 60 + quotient(source + 4) / 3600;
    const double whole = std::floor(value);
    if (whole > MaxTerm) {
        return;
    }
    double rest = (value - whole) * 3600;
    const Fraction first = whole < 1 ? smallFirst(rest, rest) : Fraction{static_cast<int32_t>(whole), 1};
    const auto minutes = static_cast<int32_t>(rest / 60);
    const auto seconds = static_cast<int32_t>(std::lround((rest - 60.0 * minutes) * Microseconds));
    const int32_t common = std::gcd(seconds, Microseconds);
    const int32_t words[6] = {first.numerator, first.denominator, minutes, 1, seconds / common, Microseconds / common};
    std::ranges::copy(words, group);
}

void keepAltitude(const uint32_t (&source)[2], int32_t (&altitude)[2]) {
    if (source[1] == 0 || isWritten(source)) {
        return;
    }
    altitude[0] = std::max<int32_t>(static_cast<int32_t>(source[0] >> 1), 1);
    altitude[1] = source[0] == 0 ? MaxTerm : std::max<int32_t>(static_cast<int32_t>(source[1] >> 1), 1);
}

} // namespace

std::optional<Fraction> simplestFraction(float value) {
    constexpr int32_t MaxTries = 1 << 23; // a float of 1 or more is a whole number of 2^-23
    if (!(value > 0 && value <= static_cast<float>(MaxTerm))) {
        return std::nullopt;
    }
    for (int32_t term = 1; term <= MaxTries; ++term) {
        const double numerator = value < 1 ? term : std::round(double{value} * term);
        const double denominator = value < 1 ? std::round(term / double{value}) : term;
        if (givesBack(numerator, denominator, value)) {
            return Fraction{static_cast<int32_t>(numerator), static_cast<int32_t>(denominator)};
        }
    }
    return std::nullopt;
}

WriterRecords writerRecords(const ExifInfo& info) {
    WriterRecords records;
    MetadataBuf& metadata = records.metadata;
    metadataBufFromExifInfo(&info, &metadata, &records.gps);
    keepExactly(info.exposureTime, metadata.exposureTime);
    keepExactly(info.fNumber, metadata.fNumber);
    keepExactly(info.focalLength, metadata.focalLength);
    keepExactly(info.focalPlaneXResolution, metadata.focalPlaneXResolution);
    // EXIF 2.3, PhotographicSensitivity: this value means a higher speed, too.
    metadata.isoSpeed = std::min(metadata.isoSpeed, 65535);
    keepGroup(info.gpsLatitude, records.gps.latitude);
    keepGroup(info.gpsLongitude, records.gps.longitude);
    keepGroup(info.gpsTimeStamp, records.gps.timeStamp);
    keepAltitude(info.gpsAltitude, records.gps.altitude);
    return records;
}
