#include "photo/photo_fields.h"

#include "containers/tag_values.h"
#include "metadata/directory_parsers.h"
#include "photo/fractions.h"
#include "photo/utf8.h"
#include "support/tiff_vocabulary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace tvmeta {

namespace {

struct TextRow {
    std::uint16_t tag;
    int field;
    std::span<char> (*text)(tvmeta_Photo& photo);
};

// The first tag of a field that has a text.
constexpr TextRow TextRows[] = {
    {tiff_tag::Make, TVMETA_MAKE, [](tvmeta_Photo& photo) { return std::span<char>(photo.make); }},
    {tiff_tag::Model, TVMETA_MODEL, [](tvmeta_Photo& photo) { return std::span<char>(photo.model); }},
    {exif_tag::LensModel, TVMETA_LENS, [](tvmeta_Photo& photo) { return std::span<char>(photo.lens); }},
    {exif_tag::BodySerialNumber, TVMETA_SERIAL_NUMBER,
     [](tvmeta_Photo& photo) { return std::span<char>(photo.serialNumber); }},
    {tiff_tag::CameraSerialNumber, TVMETA_SERIAL_NUMBER,
     [](tvmeta_Photo& photo) { return std::span<char>(photo.serialNumber); }},
};

struct IntegerRow {
    std::uint16_t tag;
    int field;
    std::int32_t tvmeta_Photo::*member;
    std::int64_t min;
    std::int64_t max;
};

constexpr std::int64_t MaxShort = 0xFFFF;
constexpr IntegerRow IntegerRows[] = {
    {tiff_tag::Orientation, TVMETA_ORIENTATION, &tvmeta_Photo::orientation, 1, 8},
    {exif_tag::ExposureMode, TVMETA_EXPOSURE_MODE, &tvmeta_Photo::exposureMode, 0, MaxShort},
    {exif_tag::ExposureProgram, TVMETA_EXPOSURE_PROGRAM, &tvmeta_Photo::exposureProgram, 0, MaxShort},
    {exif_tag::MeteringMode, TVMETA_METERING_MODE, &tvmeta_Photo::meteringMode, 0, MaxShort},
    {exif_tag::Flash, TVMETA_FLASH, &tvmeta_Photo::flash, 0, MaxShort},
    {exif_tag::WhiteBalance, TVMETA_WHITE_BALANCE, &tvmeta_Photo::whiteBalance, 0, MaxShort},
    {exif_tag::FocalLengthIn35mmFilm, TVMETA_FOCAL_LENGTH_35MM, &tvmeta_Photo::focalLength35mm, 1, MaxShort},
};

struct FractionRow {
    std::uint16_t tag;
    int field;
    tvmeta_Rational tvmeta_Photo::*member;
    bool isPositive; // 0 means that the camera does not know the value
};

constexpr FractionRow FractionRows[] = {
    {exif_tag::ExposureTime, TVMETA_EXPOSURE_TIME, &tvmeta_Photo::exposureTime, true},
    {exif_tag::FNumber, TVMETA_F_NUMBER, &tvmeta_Photo::fNumber, true},
    {exif_tag::FocalLength, TVMETA_FOCAL_LENGTH, &tvmeta_Photo::focalLength, true},
    {exif_tag::ExposureBiasValue, TVMETA_EXPOSURE_BIAS, &tvmeta_Photo::exposureBias, false},
};

} // namespace

void setText(const PhotoFields& fields, int field, std::span<char> text, std::string_view value) {
    TextWriter writer(text.first(text.size() - 1));
    putText(writer, value);
    text[writer.written()] = '\0';
    fields.set(field);
    if (writer.written() < writer.size()) {
        fields.damage(field);
    }
}

void PhotoFields::fillTexts() const {
    constexpr std::size_t MaxBytes = 1024; // several times the room of any field
    for (const TextRow& row : TextRows) {
        const tvmeta_Tag* const tag = tags.exif(row.tag);
        if (tag == nullptr || has(row.field)) {
            continue;
        }
        std::array<char, MaxBytes> bytes{};
        const std::size_t size = readBytes(reader, *tag, bytes);
        const std::string_view start(bytes.data(), size);
        const std::string_view text = trimmed(size == bytes.size() ? wholeCharacters(start) : start);
        if (!text.empty()) {
            setText(*this, row.field, row.text(photo), text);
        } else if (size == 0 && tag->count > 0) {
            damage(row.field);
        }
    }
}

void PhotoFields::fillIntegers() const {
    for (const IntegerRow& row : IntegerRows) {
        const tvmeta_Tag* const tag = tags.exif(row.tag);
        if (tag == nullptr || has(row.field)) {
            continue;
        }
        const std::optional<std::int64_t> value = readInteger(reader, *tag);
        if (value && *value >= row.min && *value <= row.max) {
            photo.*row.member = static_cast<std::int32_t>(*value);
            set(row.field);
        } else if (value.value_or(1) != 0) { // 0 means that the camera does not know the value
            damage(row.field);
        }
    }
}

void PhotoFields::fillFractions() const {
    for (const FractionRow& row : FractionRows) {
        const tvmeta_Tag* const tag = tags.exif(row.tag);
        if (tag == nullptr) {
            continue;
        }
        std::optional<tvmeta_Rational> value = readFraction(reader, *tag);
        if (value && value->denominator < 0) {
            value = {-value->numerator, -value->denominator};
        }
        if (!value || (value->denominator == 0 && value->numerator != 0) || (row.isPositive && value->numerator < 0)) {
            damage(row.field);
        } else if (value->denominator != 0 && (value->numerator != 0 || !row.isPositive)) {
            photo.*row.member = *value;
            set(row.field);
        }
    }
}

// 65535 means that the speed is higher than the tag can express, and in another one (EXIF 2.32, section 4.6.5.1.5).
void PhotoFields::fillIsoSpeed() const {
    constexpr std::int64_t Beyond = 65535;
    bool isUnreadable = false;
    const auto read = [&](const tvmeta_Tag* tag) {
        const std::optional<std::int64_t> value = tag != nullptr ? readInteger(reader, *tag) : 0;
        isUnreadable |= !value;
        return value.value_or(0);
    };
    std::int64_t speed = read(tags.exif(exif_tag::IsoSpeedRatings));
    for (const std::uint16_t tag :
         {exif_tag::IsoSpeed, exif_tag::RecommendedExposureIndex, exif_tag::StandardOutputSensitivity}) {
        if (speed == 0 || speed == Beyond) {
            speed = std::max(read(tags.exif(tag)), speed);
        }
    }
    if (speed == 0 && photo.format == TVMETA_FORMAT_RW2) {
        speed = read(tags.image(rw2_tag::IsoSpeed));
    }
    if (speed > 0 && speed <= INT32_MAX) {
        photo.isoSpeed = static_cast<std::int32_t>(speed);
        set(TVMETA_ISO_SPEED);
    } else if (speed != 0 || isUnreadable) {
        damage(TVMETA_ISO_SPEED);
    }
}

// Values that the file has in another form: APEX (EXIF 2.32, annex C), an exposure index, or words in the description
// of a TIFF file.
void PhotoFields::deriveExposure() const {
    const auto apex = [&](std::uint16_t tag) -> std::optional<double> {
        const tvmeta_Tag* const entry = tags.exif(tag);
        const auto value = entry != nullptr ? readFraction(reader, *entry) : std::nullopt;
        return value && value->denominator != 0 && value->numerator != 0 ? std::optional(quotient(*value))
                                                                         : std::nullopt;
    };
    const auto derived = [&](int field, tvmeta_Rational& member, double value, double tolerance) {
        if (const tvmeta_Rational fraction = nearestFraction(value, tolerance); fraction.denominator > 0) {
            member = fraction;
            derive(field);
        }
    };
    if (const auto value = apex(exif_tag::ShutterSpeedValue); value && !has(TVMETA_EXPOSURE_TIME)) {
        constexpr double Tolerance = 2e-3; // cameras write a 1/125 as 1/128, or with few digits
        derived(TVMETA_EXPOSURE_TIME, photo.exposureTime, std::exp2(-*value), Tolerance);
    }
    if (const auto value = apex(exif_tag::ApertureValue); value && !has(TVMETA_F_NUMBER)) {
        constexpr double Tolerance = 5e-3;
        derived(TVMETA_F_NUMBER, photo.fNumber, std::exp2(*value / 2), Tolerance);
    }
    if (const auto value = apex(exif_tag::ExposureIndex);
        value && !has(TVMETA_ISO_SPEED) && *value >= 1 && *value <= INT32_MAX) {
        photo.isoSpeed = static_cast<std::int32_t>(std::lround(*value));
        derive(TVMETA_ISO_SPEED);
    }
    const tvmeta_Tag* const description = tags.image(tiff_tag::ImageDescription);
    if (description == nullptr || photo.format != TVMETA_FORMAT_TIFF || has(TVMETA_EXPOSURE_TIME)) {
        return;
    }
    std::array<char, 256> bytes{};
    const std::size_t size = readBytes(reader, *description, bytes);
    ExifInfo info{};
    parseDescription({bytes.data(), size}, info);
    if (info.exposureSource == 0) {
        return;
    }
    constexpr double FloatTolerance = 1e-6;
    derived(TVMETA_EXPOSURE_TIME, photo.exposureTime, static_cast<double>(info.exposureTime), FloatTolerance);
    if (!has(TVMETA_ISO_SPEED)) {
        photo.isoSpeed = info.isoSpeed;
        derive(TVMETA_ISO_SPEED);
    }
}

void PhotoFields::fill() const {
    fillTexts();
    fillIntegers();
    fillFractions();
    fillIsoSpeed();
    deriveExposure();
    fillTime();
    fillPosition();
}

} // namespace tvmeta
