// Capture time and position (EXIF 2.32, sections 4.6.5.4 and 4.6.6).
#include "containers/tag_values.h"
#include "photo/fractions.h"
#include "photo/photo_fields.h"
#include "photo/utf8.h"
#include "support/text_numbers.h"
#include "support/text_search.h"
#include "support/tiff_vocabulary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>

namespace tvmeta {

namespace {

// A number of exactly `digits` digits at the start of the text, which is removed; -1 if there is none.
int takeNumber(std::string_view& text, std::size_t digits) {
    const std::string_view number = text.substr(0, digits);
    if (number.size() < digits || !std::ranges::all_of(number, isDigit)) {
        return -1;
    }
    int value = 0;
    std::from_chars(number.data(), number.data() + digits, value);
    text.remove_prefix(digits);
    return value;
}

// Seconds since 1970 of "YYYY:MM:DD", which some programs write with other separators.
std::optional<std::int64_t> takeDate(std::string_view& text) {
    constexpr std::string_view Separators = ":-/.";
    const int year = takeNumber(text, 4);
    const bool first = takeOneOf(text, Separators);
    const int month = takeNumber(text, 2);
    const bool second = takeOneOf(text, Separators);
    const int day = takeNumber(text, 2);
    using namespace std::chrono;
    const year_month_day date(std::chrono::year{year}, std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day)));
    if (year <= 0 || month < 1 || day < 1 || !first || !second || !date.ok()) {
        return std::nullopt;
    }
    return std::int64_t{sys_days(date).time_since_epoch().count()} * 86400;
}

std::optional<std::int64_t> takeDateTime(std::string_view text) {
    const std::optional<std::int64_t> date = takeDate(text);
    const bool hasTime = date && takeOneOf(text, " T");
    const int hour = takeNumber(text, 2);
    const bool first = takeOneOf(text, ":");
    const int minute = takeNumber(text, 2);
    const bool second = takeOneOf(text, ":");
    const int seconds = takeNumber(text, 2);
    if (!hasTime || !first || !second || hour < 0 || hour > 23 || minute < 0 || minute > 59 || seconds < 0 ||
        seconds > 60) {
        return std::nullopt;
    }
    return *date + hour * 3600 + minute * 60 + seconds;
}

// "+HH:MM", "-HH:MM" or "Z", in minutes.
std::optional<int> takeOffset(std::string_view text) {
    if (text == "Z") {
        return 0;
    }
    const bool isWest = text.starts_with('-');
    if (!takeOneOf(text, "+-")) {
        return std::nullopt;
    }
    const int hours = takeNumber(text, 2);
    const bool separated = takeOneOf(text, ":");
    const int minutes = takeNumber(text, 2);
    if (!separated || hours < 0 || hours > 15 || minutes < 0 || minutes > 59) {
        return std::nullopt;
    }
    return (isWest ? -1 : 1) * (hours * 60 + minutes);
}

// A short text. Cameras without a clock that was set write spaces, or zeros as in "0000:00:00 00:00:00".
struct ShortText {
    ShortText(SourceReader& reader, const tvmeta_Tag* tag) {
        if (tag != nullptr) {
            const std::size_t size = readBytes(reader, *tag, bytes);
            text = trimmed({bytes.data(), size});
            isUnreadable = size == 0 && tag->count > 0;
        }
    }
    ShortText(const ShortText&) = delete;
    ShortText& operator=(const ShortText&) = delete;

    bool isUnset() const { return text.find_first_not_of("0: -") == NotFound; }

    std::array<char, 64> bytes{};
    std::string_view text;
    bool isUnreadable = false;
};

// Degrees or hours, minutes, seconds. Missing and empty ones count as 0.
std::optional<double> readSexagesimal(SourceReader& reader, const tvmeta_Tag& tag) {
    double value = 0.0;
    double weight = 1.0;
    for (std::uint64_t i = 0; i < 3 && i < tag.count; ++i, weight /= 60.0) {
        const std::optional<tvmeta_Rational> part = readFraction(reader, tag, i);
        if (!part || (part->denominator == 0 && (i == 0 || part->numerator != 0))) {
            return std::nullopt;
        }
        value += part->denominator != 0 ? quotient(*part) * weight : 0.0;
    }
    return tag.count > 0 ? std::optional(value) : std::nullopt;
}

} // namespace

void PhotoFields::fillTime() const {
    struct Tags {
        std::uint16_t time;
        std::uint16_t fraction;
        std::uint16_t offset;
    };
    constexpr Tags Clocks[] = {
        {exif_tag::DateTimeOriginal, exif_tag::SubSecTimeOriginal, exif_tag::OffsetTimeOriginal},
        {exif_tag::DateTimeDigitized, exif_tag::SubSecTimeDigitized, exif_tag::OffsetTimeDigitized},
    };
    for (const Tags& clock : Clocks) {
        const ShortText text(reader, tags.exif(clock.time));
        if (text.isUnset() && !text.isUnreadable) {
            continue;
        }
        const std::optional<std::int64_t> time = takeDateTime(text.text);
        if (!time) {
            damage(TVMETA_CAPTURE_TIME);
            continue;
        }
        photo.captureTime = *time;
        set(TVMETA_CAPTURE_TIME);
        fillFraction(tags.exif(clock.fraction));
        const ShortText offset(reader, tags.exif(clock.offset));
        if (const std::optional<int> minutes = takeOffset(offset.text)) {
            photo.utcOffset = *minutes;
            set(TVMETA_UTC_OFFSET);
        } else if (offset.isUnreadable || offset.text.find_first_not_of(" :") != NotFound) {
            damage(TVMETA_UTC_OFFSET);
        }
        return;
    }
}

// The digits after the decimal point. Nine are nanoseconds.
void PhotoFields::fillFraction(const tvmeta_Tag* tag) const {
    const ShortText text(reader, tag);
    if (text.isUnreadable) {
        return damage(TVMETA_SUB_SECOND);
    }
    if (text.text.empty()) {
        return;
    }
    constexpr int MaxDigits = 9;
    int digits = 0;
    std::int32_t nanoseconds = 0;
    for (const char c : text.text) {
        if (!isDigit(c)) {
            return damage(TVMETA_SUB_SECOND);
        }
        if (digits < MaxDigits) {
            nanoseconds = 10 * nanoseconds + (c - '0');
            ++digits;
        }
    }
    photo.subSecondDigits = digits;
    for (; digits < MaxDigits; ++digits) {
        nanoseconds *= 10;
    }
    photo.captureNanoseconds = nanoseconds;
    set(TVMETA_SUB_SECOND);
}

void PhotoFields::fillPosition() const {
    struct Coordinate {
        std::uint16_t tag;
        std::uint16_t reference;
        char negative;
        double limit;
        int field;
        double tvmeta_Photo::*member;
    };
    constexpr Coordinate Coordinates[] = {
        {gps_tag::Latitude, gps_tag::LatitudeRef, 'S', 90.0, TVMETA_LATITUDE, &tvmeta_Photo::latitude},
        {gps_tag::Longitude, gps_tag::LongitudeRef, 'W', 180.0, TVMETA_LONGITUDE, &tvmeta_Photo::longitude},
    };
    for (const Coordinate& coordinate : Coordinates) {
        const tvmeta_Tag* const tag = tags.gps(coordinate.tag);
        if (tag == nullptr) {
            continue;
        }
        const std::optional<double> degrees = readSexagesimal(reader, *tag);
        const ShortText reference(reader, tags.gps(coordinate.reference));
        if (!degrees || std::fabs(*degrees) > coordinate.limit) {
            damage(coordinate.field);
            continue;
        }
        const bool isNegative = reference.text.starts_with(coordinate.negative);
        photo.*coordinate.member = isNegative ? -*degrees : *degrees;
        set(coordinate.field);
    }
    fillAltitude();
    fillGpsTime();
}

void PhotoFields::fillAltitude() const {
    constexpr std::int64_t BelowSeaLevel = 1;
    const tvmeta_Tag* const tag = tags.gps(gps_tag::Altitude);
    if (tag == nullptr) {
        return;
    }
    const std::optional<tvmeta_Rational> metres = readFraction(reader, *tag);
    const tvmeta_Tag* const reference = tags.gps(gps_tag::AltitudeRef);
    if (!metres || (metres->denominator == 0 && metres->numerator != 0)) {
        damage(TVMETA_ALTITUDE);
    } else if (metres->denominator != 0) {
        const bool isBelow = reference != nullptr && readInteger(reader, *reference).value_or(0) == BelowSeaLevel;
        photo.altitude = isBelow ? -quotient(*metres) : quotient(*metres);
        set(TVMETA_ALTITUDE);
    }
}

void PhotoFields::fillGpsTime() const {
    const ShortText date(reader, tags.gps(gps_tag::DateStamp));
    const tvmeta_Tag* const stamp = tags.gps(gps_tag::TimeStamp);
    if (stamp == nullptr || date.isUnset()) {
        return;
    }
    std::string_view text = date.text;
    const std::optional<std::int64_t> day = takeDate(text);
    const std::optional<double> hours = readSexagesimal(reader, *stamp);
    if (!day || !hours || *hours < 0.0 || *hours >= 25.0) {
        return damage(TVMETA_GPS_TIME);
    }
    constexpr double RoundingError = 1e-4;
    photo.gpsTime = *day + static_cast<std::int64_t>(std::floor(*hours * 3600.0 + RoundingError));
    set(TVMETA_GPS_TIME);
}

} // namespace tvmeta
