// The EXIF directory (EXIF 2.3, sections 4.6.3 and 4.6.5).
#include "metadata/directory_parsers.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace tvmeta {

namespace {

float quotient(const Rational& rational) {
    return static_cast<float>(rational.numerator) / static_cast<float>(rational.denominator);
}

// Reads a rational into `field`; leaves it unchanged if the denominator is not positive.
void readFloat(const TiffReader& tiff, float& field) {
    const Rational rational = tiff.readRational();
    if (rational.denominator > 0) {
        field = quotient(rational);
    }
}

// APEX: the shutter speed value v means 2^-v seconds. Cameras write 0 for an unknown value, which gives 0 seconds.
float readShutterSpeed(const TiffReader& tiff) {
    const Rational rational = tiff.readRational();
    const float value = rational.denominator != 0 ? quotient(rational) : static_cast<float>(rational.numerator);
    return value != 0.0F ? static_cast<float>(1.0 / std::exp(static_cast<double>(value) * std::numbers::ln2)) : 0.0F;
}

std::int32_t readExposureIndex(const TiffReader& tiff) {
    const Rational rational = tiff.readRational();
    return rational.denominator > 0 ? rational.numerator / rational.denominator : rational.numerator;
}

void readEntry(const TiffReader& tiff, const DirectoryEntry& entry, ExifInfo& info, float& shutterSpeed) {
    tiff.seekToValue(entry);
    switch (entry.tag) {
    case exif_tag::ExposureTime:
        readFloat(tiff, info.exposureTime);
        break;
    case exif_tag::FNumber:
        readFloat(tiff, info.fNumber);
        break;
    case exif_tag::IsoSpeedRatings:
        info.isoSpeed = entry.value;
        break;
    case exif_tag::DateTimeOriginal:
        tiff.readLine(info.dateTimeOriginal);
        break;
    case exif_tag::ShutterSpeedValue:
        shutterSpeed = readShutterSpeed(tiff);
        break;
    case exif_tag::ApertureValue:
    case exif_tag::MaxApertureValue:
        if (info.fNumber == 0.0F) {
            readFloat(tiff, info.fNumber);
        }
        break;
    case exif_tag::FocalLength:
        readFloat(tiff, info.focalLength);
        break;
    case exif_tag::FocalPlaneXResolution:
        readFloat(tiff, info.focalPlaneXResolution);
        break;
    case exif_tag::FocalPlaneResolutionUnit:
        info.focalPlaneResolutionUnit = entry.value;
        break;
    case exif_tag::ExposureIndex:
        if (info.isoSpeed == 0) {
            info.isoSpeed = readExposureIndex(tiff);
        }
        break;
    case exif_tag::FocalLengthIn35mmFilm:
        info.focalLength35mm = entry.value;
        break;
    default:
        break;
    }
}

} // namespace

void readExifDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info) {
    const std::uint16_t count = tiff.read16();
    if (count == 0 || !budget.takeEntries(count)) {
        return;
    }
    float shutterSpeed = 0.0F;
    DirectoryReader directory(tiff, count);
    while (const std::optional<DirectoryEntry> entry = directory.next()) {
        readEntry(tiff, *entry, info, shutterSpeed);
    }
    if (info.exposureTime == 0.0F && shutterSpeed > 0.0F) {
        info.exposureTime = shutterSpeed;
    }
}

} // namespace tvmeta

std::int32_t parse_exif_data(FILE* stream, std::int32_t, std::int32_t byteOrder, std::int32_t tiffBase,
                             ExifInfo* info) noexcept {
    if (stream != nullptr && info != nullptr) {
        tvmeta::LentStreamReader reader(stream);
        tvmeta::WorkBudget budget;
        tvmeta::readExifDirectory({reader, tvmeta::byteOrderOf(byteOrder), tiffBase}, budget, *info);
    }
    return 1;
}
