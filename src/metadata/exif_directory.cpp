// The EXIF and GPS directories (EXIF 2.3, sections 4.6.3, 4.6.5 and 4.6.6). A table says for each tag how its value
// gets into the record.
#include "metadata/directory_parsers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace tvmeta {

namespace {

struct Target {
    ExifInfo& info;
    float shutterSpeed = 0.0F; // seconds
};

struct Row {
    std::uint16_t tag;
    void (*read)(const TiffReader& tiff, const DirectoryEntry& entry, Target& target);
};

float quotient(const Rational& rational) {
    return static_cast<float>(rational.numerator) / static_cast<float>(rational.denominator);
}

// Reads a rational; leaves the field unchanged if the denominator is not positive.
template <float ExifInfo::*Field>
void readFloat(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    tiff.seekToValue(entry);
    const Rational rational = tiff.readRational();
    if (rational.denominator > 0) {
        target.info.*Field = quotient(rational);
    }
}

template <std::int32_t ExifInfo::*Field>
void readNumber(const TiffReader&, const DirectoryEntry& entry, Target& target) {
    target.info.*Field = entry.value;
}

void readDateTime(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    tiff.seekToValue(entry);
    tiff.readLine(target.info.dateTimeOriginal);
}

// APEX: the shutter speed value v means 2^-v seconds. Cameras write 0 for an unknown value, which gives 0 seconds.
void readShutterSpeed(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    tiff.seekToValue(entry);
    const Rational rational = tiff.readRational();
    const float value = rational.denominator != 0 ? quotient(rational) : static_cast<float>(rational.numerator);
    const double seconds = 1.0 / std::exp(static_cast<double>(value) * std::numbers::ln2);
    target.shutterSpeed = value != 0.0F ? static_cast<float>(seconds) : 0.0F;
}

void readAperture(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    if (target.info.fNumber == 0.0F) {
        readFloat<&ExifInfo::fNumber>(tiff, entry, target);
    }
}

void readExposureIndex(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    if (target.info.isoSpeed == 0) {
        tiff.seekToValue(entry);
        const auto [numerator, denominator] = tiff.readRational();
        target.info.isoSpeed = denominator > 0 ? numerator / denominator : numerator;
    }
}

// Reads up to `count` rationals, as many as fit the field, as numerators and denominators.
template <auto Field>
void readRationals(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    tiff.seekToValue(entry, entry.field);
    const std::span<std::uint32_t> words(target.info.*Field);
    const bool isSingle = words.size() == 2; // read whatever the count is
    const auto present = static_cast<std::size_t>(std::clamp<std::int32_t>(entry.count, isSingle ? 1 : 0, 3)) * 2;
    for (std::uint32_t& word : words.first(std::min(present, words.size()))) {
        word = static_cast<std::uint32_t>(tiff.read32());
    }
}

// The letter or byte in the value field, which is the last four bytes of the entry, also of one that the file cuts
// short.
template <auto Field>
void readReference(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    tiff.reader.seek(entry.end - static_cast<std::int64_t>(EntryValueSize));
    target.info.*Field = static_cast<std::remove_reference_t<decltype(target.info.*Field)>>(tiff.reader.get());
}

void readDateStamp(const TiffReader& tiff, const DirectoryEntry& entry, Target& target) {
    constexpr std::int32_t MinDateCount = 6;
    if (entry.count >= MinDateCount) {
        tiff.seekToValue(entry, entry.field);
        const auto room = std::min(static_cast<std::size_t>(entry.count), sizeof target.info.gpsDateStamp);
        tiff.readLine(std::span(target.info.gpsDateStamp).first(room));
    }
}

constexpr Row ExifRows[] = {
    {exif_tag::ExposureTime, readFloat<&ExifInfo::exposureTime>},
    {exif_tag::FNumber, readFloat<&ExifInfo::fNumber>},
    {exif_tag::IsoSpeedRatings, readNumber<&ExifInfo::isoSpeed>},
    {exif_tag::DateTimeOriginal, readDateTime},
    {exif_tag::ShutterSpeedValue, readShutterSpeed},
    {exif_tag::ApertureValue, readAperture},
    {exif_tag::MaxApertureValue, readAperture},
    {exif_tag::FocalLength, readFloat<&ExifInfo::focalLength>},
    {exif_tag::FocalPlaneXResolution, readFloat<&ExifInfo::focalPlaneXResolution>},
    {exif_tag::FocalPlaneResolutionUnit, readNumber<&ExifInfo::focalPlaneResolutionUnit>},
    {exif_tag::ExposureIndex, readExposureIndex},
    {exif_tag::FocalLengthIn35mmFilm, readNumber<&ExifInfo::focalLength35mm>},
};

constexpr Row GpsRows[] = {
    {gps_tag::LatitudeRef, readReference<&ExifInfo::gpsLatitudeRef>},
    {gps_tag::Latitude, readRationals<&ExifInfo::gpsLatitude>},
    {gps_tag::LongitudeRef, readReference<&ExifInfo::gpsLongitudeRef>},
    {gps_tag::Longitude, readRationals<&ExifInfo::gpsLongitude>},
    {gps_tag::AltitudeRef, readReference<&ExifInfo::gpsAltitudeRef>},
    {gps_tag::Altitude, readRationals<&ExifInfo::gpsAltitude>},
    {gps_tag::TimeStamp, readRationals<&ExifInfo::gpsTimeStamp>},
    {gps_tag::DateStamp, readDateStamp},
};

void readDirectory(const TiffReader& tiff, WorkBudget& budget, std::span<const Row> rows, Target& target) {
    const std::uint16_t count = tiff.read16();
    if (!budget.takeEntries(count)) {
        return;
    }
    DirectoryReader directory(tiff, count);
    while (const std::optional<DirectoryEntry> entry = directory.next()) {
        const auto row = std::ranges::find(rows, entry->tag, &Row::tag);
        if (row != rows.end()) {
            row->read(tiff, *entry, target);
        }
    }
}

} // namespace

void readExifDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info) {
    Target target{.info = info};
    readDirectory(tiff, budget, ExifRows, target);
    if (info.exposureTime == 0.0F && target.shutterSpeed > 0.0F) {
        info.exposureTime = target.shutterSpeed;
    }
}

void readGpsDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info) {
    Target target{.info = info};
    readDirectory(tiff, budget, GpsRows, target);
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t parse_exif_data(FILE* stream, std::int32_t, std::int32_t byteOrder, std::int32_t tiffBase,
                             ExifInfo* info) noexcept {
    return parseStream(stream, info, 1, [&](StreamReader& reader, WorkBudget& budget) {
        readExifDirectory({reader, byteOrderOf(byteOrder), tiffBase}, budget, *info);
        return 1;
    });
}

std::int32_t parse_gps_data(FILE* stream, std::int32_t, std::int32_t byteOrder, std::int32_t tiffBase,
                            ExifInfo* info) noexcept {
    return parseStream(stream, info, 1, [&](StreamReader& reader, WorkBudget& budget) {
        readGpsDirectory({reader, byteOrderOf(byteOrder), tiffBase}, budget, *info);
        return 1;
    });
}
