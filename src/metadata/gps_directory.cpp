// The GPS directory (EXIF 2.3, section 4.6.6).
#include "metadata/directory_parsers.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

namespace {

// Reads up to `count` rationals, as many as fit, as numerators and denominators.
void readRationals(const TiffReader& tiff, std::int32_t count, std::span<std::uint32_t> words) {
    const auto present = static_cast<std::size_t>(std::clamp<std::int32_t>(count, 0, 3)) * 2;
    for (std::uint32_t& word : words.first(std::min(present, words.size()))) {
        word = static_cast<std::uint32_t>(tiff.read32());
    }
}

// The reference letter or byte in the value field of the entry.
int readReference(const TiffReader& tiff, const DirectoryEntry& entry) {
    tiff.reader.seek(entry.end - static_cast<std::int64_t>(EntryValueSize));
    return tiff.reader.get();
}

void readDateStamp(const TiffReader& tiff, std::int32_t count, ExifInfo& info) {
    constexpr std::int32_t MinDateCount = 6;
    if (count >= MinDateCount) {
        const auto room = std::min(static_cast<std::size_t>(count), sizeof info.gpsDateStamp);
        tiff.readLine(std::span(info.gpsDateStamp).first(room));
    }
}

void readEntry(const TiffReader& tiff, const DirectoryEntry& entry, ExifInfo& info) {
    tiff.seekToValue(entry, entry.field);
    switch (entry.tag) {
    case gps_tag::LatitudeRef:
        info.gpsLatitudeRef = static_cast<char>(readReference(tiff, entry));
        break;
    case gps_tag::Latitude:
        readRationals(tiff, entry.count, info.gpsLatitude);
        break;
    case gps_tag::LongitudeRef:
        info.gpsLongitudeRef = static_cast<char>(readReference(tiff, entry));
        break;
    case gps_tag::Longitude:
        readRationals(tiff, entry.count, info.gpsLongitude);
        break;
    case gps_tag::AltitudeRef:
        info.gpsAltitudeRef = static_cast<std::uint8_t>(readReference(tiff, entry));
        break;
    case gps_tag::Altitude:
        readRationals(tiff, 1, info.gpsAltitude); // the field has room for one, whatever the count is
        break;
    case gps_tag::TimeStamp:
        readRationals(tiff, entry.count, info.gpsTimeStamp);
        break;
    case gps_tag::DateStamp:
        readDateStamp(tiff, entry.count, info);
        break;
    default:
        break;
    }
}

} // namespace

void readGpsDirectory(const TiffReader& tiff, WorkBudget& budget, ExifInfo& info) {
    const std::uint16_t count = tiff.read16();
    if (!budget.takeEntries(count)) {
        return;
    }
    DirectoryReader directory(tiff, count);
    while (const std::optional<DirectoryEntry> entry = directory.next()) {
        readEntry(tiff, *entry, info);
    }
}

} // namespace tvmeta

std::int32_t parse_gps_data(FILE* stream, std::int32_t, std::int32_t byteOrder, std::int32_t tiffBase,
                            ExifInfo* info) noexcept {
    if (stream != nullptr && info != nullptr) {
        tvmeta::LentStreamReader reader(stream);
        tvmeta::WorkBudget budget;
        tvmeta::readGpsDirectory({reader, tvmeta::byteOrderOf(byteOrder), tiffBase}, budget, *info);
    }
    return 1;
}
