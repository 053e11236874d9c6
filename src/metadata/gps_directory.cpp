// The GPS directory (EXIF 2.3, section 4.6.6).
#include "metadata/exif_info.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

namespace {

// Reads up to so many rationals as the field takes, numerator and denominator as they stand.
void readRationals(const TiffStructure& tiff, std::int32_t count, std::span<std::uint32_t> words) noexcept {
    const auto present = static_cast<std::size_t>(std::clamp<std::int32_t>(count, 0, 3)) * 2;
    for (std::uint32_t& word : words.first(std::min(present, words.size()))) {
        word = static_cast<std::uint32_t>(tiff.read32());
    }
}

// The reference letter or byte, which stands in the entry itself.
int readReference(const TiffStructure& tiff, const DirectoryEntry& entry) noexcept {
    tiff.reader.seek(entry.end - static_cast<std::int64_t>(EntryValueSize));
    return tiff.reader.get();
}

void readDateStamp(const TiffStructure& tiff, std::int32_t count, ExifInfo& info) noexcept {
    constexpr std::int32_t ShortestDate = 6;
    if (count >= ShortestDate) {
        const auto room = std::min(static_cast<std::size_t>(count), sizeof info.gpsDateStamp);
        tiff.reader.readLine(std::span(info.gpsDateStamp).first(room));
    }
}

void readEntry(const TiffStructure& tiff, const DirectoryEntry& entry, ExifInfo& info) noexcept {
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
        readRationals(tiff, 1, info.gpsAltitude); // whatever the count says: there is room for one
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

void readGpsDirectory(const TiffStructure& tiff, WorkBudget& budget, ExifInfo& info) noexcept {
    const std::uint16_t count = tiff.read16();
    if (!budget.takeEntries(count)) {
        return;
    }
    DirectoryReader directory(tiff, count);
    for (DirectoryEntry entry; directory.next(entry);) {
        readEntry(tiff, entry, info);
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
