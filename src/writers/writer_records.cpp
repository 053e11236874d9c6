// Converts the metadata record of the readers into the records of the writers.
#include "tvmeta.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

std::int32_t saturate(double value) {
    return value < double{INT32_MAX} ? static_cast<std::int32_t>(value) : INT32_MAX;
}

// Hundredths from 1 on; below, hundredths of the reciprocal. A value that is not above zero leaves the rational as it
// is.
void setRational(float value, std::int32_t (&rational)[2]) {
    constexpr std::int32_t Hundred = 100;
    const double exact = static_cast<double>(value);
    if (exact >= 1.0) {
        rational[0] = saturate(exact * Hundred);
        rational[1] = Hundred;
    } else if (exact > 0.0) {
        rational[0] = Hundred;
        rational[1] = saturate(1.0 / exact * Hundred);
    }
}

template <typename To, typename From>
void copyField(To& to, const From& from) {
    std::memcpy(&to, &from, std::min(sizeof to, sizeof from));
}

void convertGps(const ExifInfo& info, GpsBuf& gps) {
    copyField(gps.latitude, info.gpsLatitude);
    copyField(gps.longitude, info.gpsLongitude);
    copyField(gps.altitude, info.gpsAltitude);
    copyField(gps.timeStamp, info.gpsTimeStamp);
    gps.latitudeRef = info.gpsLatitudeRef;
    gps.longitudeRef = info.gpsLongitudeRef;
    gps.altitudeRef = info.gpsAltitudeRef;
    copyField(gps.dateStamp, info.gpsDateStamp);
}

} // namespace

std::int32_t metadataBufFromExifInfo(const ExifInfo* info, MetadataBuf* metadata, GpsBuf* gps) noexcept {
    if (info == nullptr || metadata == nullptr || gps == nullptr) {
        return 0;
    }
    setRational(info->exposureTime, metadata->exposureTime);
    setRational(info->fNumber, metadata->fNumber);
    metadata->isoSpeed = info->isoSpeed;
    metadata->exposureSource = info->exposureSource;
    setRational(info->focalLength, metadata->focalLength);
    metadata->focalLength35mm = info->focalLength35mm;
    setRational(info->focalPlaneXResolution, metadata->focalPlaneXResolution);
    metadata->focalPlaneResolutionUnit = info->focalPlaneResolutionUnit;
    metadata->thumbnailOffset = info->thumbnailOffset;
    metadata->thumbnailLength = info->thumbnailLength;
    metadata->iptcOffset = info->iptcOffset;
    metadata->iptcLength = info->iptcLength;
    metadata->orientation = info->orientation;
    metadata->xmpOffset = info->xmpOffset;
    metadata->xmpLength = info->xmpLength;
    copyField(metadata->model, info->model);
    copyField(metadata->dateTimeOriginal, info->dateTimeOriginal);
    copyField(metadata->lens, info->lens); // its first 64 bytes
    convertGps(*info, *gps);
    return metadata->exposureTime[0];
}

std::int32_t get_exif_data(const char* path, std::int32_t fileType, MetadataBuf* metadata, GpsBuf* gps) noexcept {
    ExifInfo info;
    getExifData(path, fileType, &info);
    return metadataBufFromExifInfo(&info, metadata, gps);
}
