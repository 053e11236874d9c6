// The records of the writers, from that of a photograph.
#include "photo/fractions.h"
#include "photo/utf8.h"
#include "support/text_search.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>

using namespace tvmeta;

namespace {

constexpr std::int64_t MaxTerm = INT32_MAX;

// The fields that could not be kept as they are.
struct Clamped {
    void add(int field) { mask |= std::int64_t{1} << field; }

    std::int64_t mask = 0;
};

// A rational of the writers is present if both numbers are above zero.
void keepFraction(const tvmeta_Photo& photo, int field, const tvmeta_Rational& value, std::int32_t (&rational)[2],
                  Clamped& clamped) {
    if (!TVMETA_HAS(&photo, field) || value.numerator <= 0 || value.denominator <= 0) {
        return;
    }
    tvmeta_Rational kept = value;
    if (kept.numerator > MaxTerm || kept.denominator > MaxTerm) {
        const std::int64_t divisor = std::gcd(kept.numerator, kept.denominator);
        kept = {kept.numerator / divisor, kept.denominator / divisor};
    }
    if (kept.numerator > MaxTerm || kept.denominator > MaxTerm) {
        constexpr double FloatTolerance = 3e-8; // readers divide in single precision
        kept = nearestFraction(quotient(value), FloatTolerance);
        clamped.add(field);
    }
    rational[0] = static_cast<std::int32_t>(kept.numerator);
    rational[1] = static_cast<std::int32_t>(kept.denominator);
}

void keepText(const tvmeta_Photo& photo, int field, std::string_view text, std::span<char> room, Clamped& clamped) {
    TextWriter writer(room.first(room.size() - 1));
    writer.put(TVMETA_HAS(&photo, field) ? text : std::string_view());
    if (writer.written() < writer.size()) {
        clamped.add(field);
    }
}

// Writes a number with leading zeros.
void putDigits(char* text, int digits, int value) {
    for (int i = digits; i-- > 0; value /= 10) {
        text[i] = static_cast<char>('0' + value % 10);
    }
}

struct Clock {
    explicit Clock(std::int64_t seconds) {
        using namespace std::chrono;
        const sys_days midnight = floor<days>(sys_seconds(std::chrono::seconds(seconds)));
        const year_month_day date(midnight);
        year = static_cast<int>(date.year());
        month = static_cast<int>(static_cast<unsigned>(date.month()));
        day = static_cast<int>(static_cast<unsigned>(date.day()));
        secondOfDay = static_cast<int>(seconds - std::int64_t{midnight.time_since_epoch().count()} * 86400);
    }

    void putDate(char* text) const {
        putDigits(text, 4, year);
        putDigits(text + 5, 2, month);
        putDigits(text + 8, 2, day);
        text[4] = text[7] = ':';
    }

    int year;
    int month;
    int day;
    int secondOfDay;
};

// Years from 1 to 9999 have four digits.
bool isPrintable(std::int64_t seconds) {
    constexpr std::int64_t First = -62135596800; // 0001-01-01 00:00:00
    constexpr std::int64_t Last = 253402300799;  // 9999-12-31 23:59:59
    return seconds >= First && seconds <= Last;
}

void keepTime(const tvmeta_Photo& photo, char (&text)[20], Clamped& clamped) {
    if (!TVMETA_HAS(&photo, TVMETA_CAPTURE_TIME)) {
        return;
    }
    if (!isPrintable(photo.captureTime)) {
        return clamped.add(TVMETA_CAPTURE_TIME);
    }
    const Clock clock(photo.captureTime);
    clock.putDate(text);
    text[10] = ' ';
    putDigits(text + 11, 2, clock.secondOfDay / 3600);
    putDigits(text + 14, 2, clock.secondOfDay / 60 % 60);
    putDigits(text + 17, 2, clock.secondOfDay % 60);
    text[13] = text[16] = ':';
}

// The first number of a group that is below 1: 1/80 of a degree or an hour is 45 seconds, 1/800 is 4.5 and so on, all
// exact in decimals. For smaller values it is the smallest fraction, which means 0.
std::array<std::int32_t, 2> smallFirst(double& seconds) {
    double share = 45.0;
    std::int32_t denominator = 80;
    while (share > seconds && denominator <= MaxTerm / 10) {
        share /= 10.0;
        denominator *= 10;
    }
    const bool isZero = share > seconds;
    seconds = isZero ? 0.0 : seconds - share;
    return {1, isZero ? INT32_MAX : denominator};
}

// Degrees or hours, minutes and seconds. The writers omit a group whose first number is 0, so that a part of the
// minutes and seconds becomes the first number there.
void keepGroup(double value, std::int32_t (&group)[6]) {
    constexpr std::int32_t Microseconds = 1'000'000;
    const double whole = std::floor(value);
    double seconds = (value - whole) * 3600.0;
    const std::array<std::int32_t, 2> first =
        whole < 1.0 ? smallFirst(seconds) : std::array{static_cast<std::int32_t>(whole), std::int32_t{1}};
    auto micro = static_cast<std::int64_t>(std::llround(seconds * Microseconds));
    const auto minutes = static_cast<std::int32_t>(std::min<std::int64_t>(micro / (60 * Microseconds), 59));
    micro -= std::int64_t{minutes} * 60 * Microseconds;
    const std::int64_t common = std::gcd(micro, std::int64_t{Microseconds});
    const std::int32_t words[6] = {first[0],
                                   first[1],
                                   minutes,
                                   1,
                                   static_cast<std::int32_t>(micro / common),
                                   static_cast<std::int32_t>(Microseconds / common)};
    std::ranges::copy(words, group);
}

void keepAltitude(double metres, std::int32_t (&altitude)[2]) {
    constexpr std::int64_t Millimetres = 1000;
    const std::int64_t value = std::llround(std::fabs(metres) * Millimetres);
    const std::int64_t common = std::max<std::int64_t>(std::gcd(value, Millimetres), 1);
    altitude[0] = static_cast<std::int32_t>(std::max<std::int64_t>(value / common, 1)); // 0 would be omitted
    altitude[1] = value == 0 ? INT32_MAX : static_cast<std::int32_t>(Millimetres / common);
}

// Half of a place is omitted, and so are numbers that are none, which only a caller can write into the record.
void keepPosition(const tvmeta_Photo& photo, GpsBuf& gps, Clamped& clamped) {
    constexpr double MaxAltitude = 2e6;
    if (TVMETA_HAS(&photo, TVMETA_LATITUDE) && TVMETA_HAS(&photo, TVMETA_LONGITUDE) &&
        std::fabs(photo.latitude) <= 90.0 && std::fabs(photo.longitude) <= 180.0) {
        keepGroup(std::fabs(photo.latitude), gps.latitude);
        keepGroup(std::fabs(photo.longitude), gps.longitude);
        gps.latitudeRef = photo.latitude < 0.0 ? 'S' : 'N';
        gps.longitudeRef = photo.longitude < 0.0 ? 'W' : 'E';
    } else {
        for (const int field : {TVMETA_LATITUDE, TVMETA_LONGITUDE}) {
            if (TVMETA_HAS(&photo, field)) {
                clamped.add(field);
            }
        }
    }
    if (TVMETA_HAS(&photo, TVMETA_ALTITUDE)) {
        if (!(std::fabs(photo.altitude) <= MaxAltitude)) {
            clamped.add(TVMETA_ALTITUDE);
        }
        if (!std::isnan(photo.altitude)) {
            keepAltitude(std::clamp(photo.altitude, -MaxAltitude, MaxAltitude), gps.altitude);
            gps.altitudeRef = photo.altitude < 0.0 ? 1 : 0;
        }
    }
    if (TVMETA_HAS(&photo, TVMETA_GPS_TIME)) {
        if (!isPrintable(photo.gpsTime)) {
            return clamped.add(TVMETA_GPS_TIME);
        }
        const Clock clock(photo.gpsTime);
        clock.putDate(gps.dateStamp);
        keepGroup(clock.secondOfDay / 3600.0, gps.timeStamp);
    }
}

std::int64_t convert(const tvmeta_Photo& photo, MetadataBuf& metadata, GpsBuf& gps) {
    constexpr std::int32_t MaxIsoSpeed = 65535; // means a higher speed, too (EXIF 2.32, PhotographicSensitivity)
    Clamped clamped;
    keepFraction(photo, TVMETA_EXPOSURE_TIME, photo.exposureTime, metadata.exposureTime, clamped);
    keepFraction(photo, TVMETA_F_NUMBER, photo.fNumber, metadata.fNumber, clamped);
    keepFraction(photo, TVMETA_FOCAL_LENGTH, photo.focalLength, metadata.focalLength, clamped);
    keepText(photo, TVMETA_MODEL, textOf(photo.model), metadata.model, clamped);
    keepText(photo, TVMETA_LENS, textOf(photo.lens), metadata.lens, clamped);
    keepTime(photo, metadata.dateTimeOriginal, clamped);
    metadata.isoSpeed = std::min(photo.isoSpeed, MaxIsoSpeed);
    if (photo.isoSpeed > MaxIsoSpeed) {
        clamped.add(TVMETA_ISO_SPEED);
    }
    metadata.focalLength35mm = photo.focalLength35mm;
    metadata.orientation = photo.orientation;
    keepPosition(photo, gps, clamped);
    return clamped.mask;
}

} // namespace

std::int64_t tvmeta_writer_records(const tvmeta_Photo* photo, MetadataBuf* metadata, GpsBuf* gps) noexcept {
    if (photo == nullptr || photo->recordSize < sizeof(tvmeta_Photo) || metadata == nullptr || gps == nullptr) {
        return TVMETA_BAD_ARGUMENT;
    }
    std::memset(metadata, 0, sizeof *metadata);
    std::memset(gps, 0, sizeof *gps);
    return convert(*photo, *metadata, *gps);
}
