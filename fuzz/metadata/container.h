// Shared by the targets of the three containers: reads a whole file with getExifData.
#pragma once

#include "support.h"

#include <initializer_list>

namespace fuzz {

template <std::size_t Size>
bool isTerminated(const char (&field)[Size]) {
    return std::find(field, field + Size, '\0') != field + Size;
}

// The record of a file whose search ends before the directories. Only a JPEG can have values by then.
inline bool hasOnlyXmp(ExifInfo info) {
    info.xmpLength = 0;
    info.xmpOffset = 0;
    std::fill(std::begin(info.lens), std::end(info.lens), '\0');
    return allZero(info);
}

// Reads the bytes as a file of the type, checks that the result is documented, and checks the record.
inline void readContainer(std::span<const std::uint8_t> bytes, std::int32_t fileType,
                          std::initializer_list<std::int32_t> results) {
    const MemoryFile& file = memoryFile().write(bytes);
    ExifInfo info;
    std::memset(&info, 0xA5, sizeof info); // getExifData must clear it
    const std::int32_t result = getExifData(file.path(), fileType, &info);
    require(std::find(results.begin(), results.end(), result) != results.end(), "the result is documented");
    require(isTerminated(info.model) && isTerminated(info.dateTimeOriginal) && isTerminated(info.gpsDateStamp) &&
                isTerminated(info.lens),
            "texts are terminated");
    const bool endedEarly = result < 0 && result != -10 && (fileType != FILE_TYPE_JPEG || result != -1);
    require(!endedEarly || (fileType == FILE_TYPE_JPEG ? hasOnlyXmp(info) : allZero(info)),
            "a failure before the directories leaves the record cleared");

    MetadataBuf metadata = {};
    GpsBuf gps = {};
    const std::int32_t converted = metadataBufFromExifInfo(&info, &metadata, &gps);
    MetadataBuf metadataInOneStep = {};
    GpsBuf gpsInOneStep = {};
    require(get_exif_data(file.path(), fileType, &metadataInOneStep, &gpsInOneStep) == converted &&
                sameBytes(metadata, metadataInOneStep) && sameBytes(gps, gpsInOneStep),
            "reading in one step gives the result of two steps");
}

} // namespace fuzz
