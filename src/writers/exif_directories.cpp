#include "writers/exif_directories.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tvmeta {

namespace {

struct MakeRule {
    std::string_view modelPrefix;
    std::string_view make;
};

constexpr MakeRule MakeRules[] = {
    {"Canon", "Canon"},         {"NIKON", "NIKON CORPORATION"},
    {"SLT-A", "SONY"},          {"SONY", "SONY"},
    {"DMC-", "Panasonic"},      {"NEX-", "SONY"},
    {"X10 ", "FUJIFILM"}, // the reader pads short names with a space
    {"PENTAX", "PENTAX"},       {"DSLR-A", "SONY"},
    {"E-1", "OLYMPUS"},         {"E-2", "OLYMPUS"},
    {"E-3", "OLYMPUS"},         {"E-4", "OLYMPUS"},
    {"E-5", "OLYMPUS"},         {"E-6", "OLYMPUS"},
    {"E-7", "OLYMPUS"},         {"E-P", "OLYMPUS"},
    {"E-M", "OLYMPUS"},         {"SP3", "OLYMPUS"},
    {"SP5", "OLYMPUS"},         {"OLYMPUS", "OLYMPUS"},
    {"FinePix", "FUJIFILM"},    {"FUJIFILM", "FUJIFILM"},
    {"Panasonic", "Panasonic"},
};

constexpr std::array<unsigned char, 4> GpsVersion = {2, 2, 0, 0};

// The count of a text with its terminator, or `unterminated` for a text that fills its field.
template <std::size_t Size>
std::size_t countText(const char (&field)[Size], std::size_t unterminated) {
    const std::size_t size = textOf(field).size();
    if (size == Size) {
        return unterminated;
    }
    return size > 0 ? size + 1 : 0;
}

void addIfPresent(DirectoryBuilder& directory, std::uint16_t tag, std::span<const std::int32_t> rationals) {
    if (rationals[0] > 0 && rationals[1] > 0) {
        directory.addRationals(tag, rationals);
    }
}

// A reference letter. Its terminator is counted, but not written.
void addReference(DirectoryBuilder& directory, std::uint16_t tag, const char& letter) {
    if (static_cast<signed char>(letter) > 0) {
        directory.addText(tag, std::span(&letter, 1), 2);
    }
}

} // namespace

std::string_view makeOf(std::string_view model) {
    const auto isFor = [model](const MakeRule& rule) { return model.starts_with(rule.modelPrefix); };
    const auto* const rule = std::ranges::find_if(MakeRules, isFor);
    return rule != std::end(MakeRules) ? rule->make : std::string_view();
}

TextCounts countTexts(const MetadataBuf& metadata, const GpsBuf& gps) {
    const std::string_view make = makeOf(textOf(metadata.model));
    return {
        .model = countText(metadata.model, sizeof metadata.model - 1),
        .make = make.empty() ? 0 : make.size() + 1,
        .date = countText(metadata.dateTimeOriginal, sizeof metadata.dateTimeOriginal + 1),
        .gpsDate = gps.dateStamp[0] != '\0' ? sizeof gps.dateStamp : 0,
        .lens = countText(metadata.lens, sizeof metadata.lens - 1),
    };
}

DirectoryBuilder exifDirectory(const MetadataBuf& metadata, std::size_t dateCount) {
    DirectoryBuilder directory;
    addIfPresent(directory, exif_tag::ExposureTime, metadata.exposureTime);
    addIfPresent(directory, exif_tag::FNumber, metadata.fNumber);
    if (metadata.isoSpeed > 0) {
        directory.addShort(exif_tag::IsoSpeedRatings, static_cast<std::uint16_t>(metadata.isoSpeed));
    }
    directory.addText(exif_tag::DateTimeOriginal, metadata.dateTimeOriginal, dateCount);
    addIfPresent(directory, exif_tag::FocalLength, metadata.focalLength);
    return directory;
}

DirectoryBuilder gpsDirectory(const GpsBuf& gps, std::size_t gpsDateCount) {
    DirectoryBuilder directory;
    addReference(directory, gps_tag::LatitudeRef, gps.latitudeRef);
    addIfPresent(directory, gps_tag::Latitude, gps.latitude);
    addReference(directory, gps_tag::LongitudeRef, gps.longitudeRef);
    addIfPresent(directory, gps_tag::Longitude, gps.longitude);
    if (gps.altitudeRef > 0) {
        directory.addBlock(gps_tag::AltitudeRef, tiff_type::Byte, std::span(&gps.altitudeRef, 1));
    }
    addIfPresent(directory, gps_tag::Altitude, gps.altitude);
    addIfPresent(directory, gps_tag::TimeStamp, gps.timeStamp);
    directory.addText(gps_tag::DateStamp, gps.dateStamp, gpsDateCount);
    if (directory.entries() > 0) {
        directory.addBlock(gps_tag::VersionId, tiff_type::Byte, GpsVersion);
    }
    return directory;
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t get_exif_count(const MetadataBuf* metadata, std::int32_t* exifCount, std::int32_t* exifBytes,
                            const GpsBuf* gps, std::int32_t* gpsCount, std::int32_t* gpsBytes, std::int32_t* modelCount,
                            std::int32_t* makeCount, std::int32_t* dateCount, std::int32_t* gpsDateCount,
                            std::int32_t* lensCount, char* make) noexcept {
    const void* const arguments[] = {metadata,   exifCount, exifBytes, gps,          gpsCount,  gpsBytes,
                                     modelCount, makeCount, dateCount, gpsDateCount, lensCount, make};
    if (std::ranges::count(arguments, nullptr) > 0) {
        return 0;
    }
    const auto put = [](std::int32_t* out, std::size_t value) { *out = static_cast<std::int32_t>(value); };
    const TextCounts counts = countTexts(*metadata, *gps);
    const DirectoryBuilder exif = exifDirectory(*metadata, counts.date);
    const DirectoryBuilder place = gpsDirectory(*gps, counts.gpsDate);
    put(exifCount, exif.entries());
    put(exifBytes, exif.valueBytes());
    put(gpsCount, place.entries());
    put(gpsBytes, place.valueBytes());
    put(modelCount, counts.model);
    put(makeCount, counts.make);
    put(dateCount, counts.date);
    put(gpsDateCount, counts.gpsDate);
    put(lensCount, counts.lens);
    std::memset(make, 0, MakeSize);
    makeOf(textOf(metadata->model)).copy(make, MakeSize);
    return *exifCount + *gpsCount;
}
