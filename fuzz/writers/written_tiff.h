// Shared by the targets of the writers: input records, and checks of the written file.
#pragma once

#include "support.h"

namespace fuzz {

struct Records {
    MetadataBuf metadata = {};
    GpsBuf gps = {};
};

// The records in memory form, from the start of the input.
inline Records takeRecords(FuzzedDataProvider& input) {
    Records records;
    input.ConsumeData(&records.metadata, sizeof records.metadata);
    input.ConsumeData(&records.gps, sizeof records.gps);
    return records;
}

// The size of a directory, its values, and the directories that it points to.
inline std::size_t directorySize(const Bytes& tiff, std::size_t directory) {
    constexpr std::array<std::size_t, 8> TypeSizes = {0, 1, 1, 2, 4, 8, 1, 1};
    constexpr std::uint32_t ExifDirectory = 34665;
    constexpr std::uint32_t GpsDirectory = 34853;
    const std::size_t entries = loadLe(tiff, directory, 2);
    std::size_t size = 2 + 12 * entries + 4;
    require(loadLe(tiff, directory + size - 4, 4) == 0, "there is no further directory");
    for (std::size_t entry = directory + 2; entry < directory + 2 + 12 * entries; entry += 12) {
        const std::uint32_t tag = loadLe(tiff, entry, 2);
        const std::uint32_t type = loadLe(tiff, entry + 2, 2);
        require(entry == directory + 2 || tag > loadLe(tiff, entry - 12, 2), "tags are in ascending order");
        require(type > 0 && type < TypeSizes.size(), "types are known");
        const std::size_t bytes = TypeSizes[type] * loadLe(tiff, entry + 4, 4);
        const std::size_t value = loadLe(tiff, entry + 8, 4);
        if (tag == ExifDirectory || tag == GpsDirectory) {
            size += directorySize(tiff, value);
        } else if (bytes > 4) {
            require(value > directory && value + bytes <= tiff.size(), "values follow their directory");
            size += bytes;
        }
    }
    return size;
}

template <std::size_t Size>
std::string fieldText(const char (&field)[Size]) {
    return {field, std::find(field, field + Size, '\0')};
}

// The part of a text that a reader reads: one line of up to `room` characters.
inline std::string lineOf(std::string text, std::size_t room) {
    text.resize(
        std::min({text.size(), room, text.find('\n') != std::string::npos ? text.find('\n') + 1 : text.size()}));
    return text;
}

// A model after writing and reading: names of less than four characters are padded, and a name that fills its field
// loses its last byte to the terminator.
inline std::string expectedModel(const MetadataBuf& metadata) {
    const std::string model = fieldText(metadata.model);
    if (model.size() == 2 || model.size() == 3) {
        return model + std::string(4 - model.size(), ' ');
    }
    return model.size() < 2 ? model : lineOf(model, model.size() < sizeof metadata.model ? model.size() : 62);
}

inline float expectedFloat(const std::int32_t (&rational)[2]) {
    const bool present = rational[0] > 0 && rational[1] > 0;
    return present ? static_cast<float>(rational[0]) / static_cast<float>(rational[1]) : 0.0F;
}

// Rationals are unchanged after writing and reading if the first one is present.
template <std::size_t Size>
bool cameBack(const std::uint32_t (&read)[Size], const std::int32_t (&written)[Size]) {
    return written[0] > 0 && written[1] > 0 ? std::memcmp(read, written, sizeof read) == 0 : allZero(read);
}

inline bool cameBack(char read, char written) {
    return read == (static_cast<signed char>(written) > 0 ? written : '\0');
}

// Reads a written file and compares it with the records.
inline ExifInfo requireReadBack(const MemoryFile& file, const Records& records, std::int32_t orientation) {
    const auto& [metadata, gps] = records;
    ExifInfo info;
    require(getExifData(file.path(), FILE_TYPE_TIFF, &info) == 1, "the written file is read");
    require(info.model == expectedModel(metadata), "the model is read back");
    const std::string date = fieldText(metadata.dateTimeOriginal);
    constexpr std::size_t MinDate = 4; // shorter ones are in the entry, where readers do not look for a date
    require((!date.empty() && date.size() < MinDate) ||
                info.dateTimeOriginal == lineOf(date, sizeof info.dateTimeOriginal - 1),
            "the date is read back");
    require(info.exposureTime == expectedFloat(metadata.exposureTime) &&
                info.fNumber == expectedFloat(metadata.fNumber) &&
                info.focalLength == expectedFloat(metadata.focalLength) &&
                info.isoSpeed == (metadata.isoSpeed > 0 ? metadata.isoSpeed & 0xFFFF : 0),
            "the exposure is read back");
    require(info.orientation == (orientation >= 1 && orientation <= 8 ? orientation : 1),
            "the orientation is read back");
    require(cameBack(info.gpsLatitudeRef, gps.latitudeRef) && cameBack(info.gpsLatitude, gps.latitude) &&
                cameBack(info.gpsLongitudeRef, gps.longitudeRef) && cameBack(info.gpsLongitude, gps.longitude) &&
                info.gpsAltitudeRef == gps.altitudeRef && cameBack(info.gpsAltitude, gps.altitude) &&
                cameBack(info.gpsTimeStamp, gps.timeStamp) &&
                info.gpsDateStamp == lineOf(fieldText(gps.dateStamp), sizeof info.gpsDateStamp - 1),
            "the position is read back");
    return info;
}

} // namespace fuzz
