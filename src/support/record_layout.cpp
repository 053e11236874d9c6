// The records at the interface, pinned: callers in other languages and older builds rely on these places.
#include "support/platform.h"
#include "tvmeta.h"

#include <cstddef>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<ExifInfo> && std::is_standard_layout_v<ExifInfo>);
static_assert(sizeof(ExifInfo) == 516);
static_assert(offsetof(ExifInfo, exposureTime) == 4);
static_assert(offsetof(ExifInfo, focalLength) == 16);
static_assert(offsetof(ExifInfo, model) == 32);
static_assert(offsetof(ExifInfo, dateTimeOriginal) == 96);
static_assert(offsetof(ExifInfo, thumbnailWidth) == 116);
static_assert(offsetof(ExifInfo, thumbnailOffset) == 132);
static_assert(offsetof(ExifInfo, orientation) == 136);
static_assert(offsetof(ExifInfo, iptcOffset) == 144);
static_assert(offsetof(ExifInfo, gpsLatitudeRef) == 148);
static_assert(offsetof(ExifInfo, gpsLatitude) == 152);
static_assert(offsetof(ExifInfo, gpsLongitude) == 180);
static_assert(offsetof(ExifInfo, gpsAltitude) == 208);
static_assert(offsetof(ExifInfo, gpsTimeStamp) == 216);
static_assert(offsetof(ExifInfo, gpsDateStamp) == 240);
static_assert(offsetof(ExifInfo, xmpLength) == 252);
static_assert(offsetof(ExifInfo, xmpOffset) == 256);
static_assert(offsetof(ExifInfo, lens) == 260);

static_assert(std::is_trivially_copyable_v<MetadataBuf> && std::is_standard_layout_v<MetadataBuf>);
static_assert(sizeof(MetadataBuf) == 224);
static_assert(offsetof(MetadataBuf, fNumber) == 8);
static_assert(offsetof(MetadataBuf, isoSpeed) == 16);
static_assert(offsetof(MetadataBuf, focalLength) == 24);
static_assert(offsetof(MetadataBuf, focalPlaneXResolution) == 36);
static_assert(offsetof(MetadataBuf, thumbnailOffset) == 48);
static_assert(offsetof(MetadataBuf, iptcOffset) == 56);
static_assert(offsetof(MetadataBuf, orientation) == 64);
static_assert(offsetof(MetadataBuf, xmpOffset) == 68);
static_assert(offsetof(MetadataBuf, model) == 76);
static_assert(offsetof(MetadataBuf, dateTimeOriginal) == 140);
static_assert(offsetof(MetadataBuf, lens) == 160);

static_assert(std::is_trivially_copyable_v<GpsBuf> && std::is_standard_layout_v<GpsBuf>);
static_assert(sizeof(GpsBuf) == 96);
static_assert(offsetof(GpsBuf, longitude) == 24);
static_assert(offsetof(GpsBuf, altitude) == 48);
static_assert(offsetof(GpsBuf, timeStamp) == 56);
static_assert(offsetof(GpsBuf, latitudeRef) == 80);
static_assert(offsetof(GpsBuf, altitudeRef) == 82);
static_assert(offsetof(GpsBuf, dateStamp) == 83);

static_assert(sizeof(TifImageInfo) == 32);
static_assert(offsetof(TifImageInfo, bitsCode) == 12);
static_assert(offsetof(TifImageInfo, iccLength) == 20);
static_assert(offsetof(TifImageInfo, orientation) == 28);

static_assert(sizeof(SettingsValues) == 72);
