// The sizes of the records at the interface, pinned on every platform: callers in other languages and older builds rely
// on them. scripts/check-abi compares every member.
#include "support/platform.h"
#include "tvmeta_photo.h"

#include <cstddef>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<ExifInfo> && std::is_standard_layout_v<ExifInfo>);
static_assert(std::is_trivially_copyable_v<MetadataBuf> && std::is_standard_layout_v<MetadataBuf>);
static_assert(std::is_trivially_copyable_v<GpsBuf> && std::is_standard_layout_v<GpsBuf>);

static_assert(sizeof(ExifInfo) == 516);
static_assert(sizeof(MetadataBuf) == 224);
static_assert(sizeof(GpsBuf) == 96);
static_assert(sizeof(TifImageInfo) == 32);
static_assert(sizeof(SettingsValues) == 72);
static_assert(sizeof(tvmeta_Source) == 32);
static_assert(sizeof(tvmeta_Rational) == 16);
static_assert(sizeof(tvmeta_Block) == 24);
static_assert(sizeof(tvmeta_Tag) == 32);
static_assert(sizeof(tvmeta_Dataset) == 24);
static_assert(sizeof(tvmeta_Loss) == 12);
static_assert(sizeof(tvmeta_BracketMember) == 32);

// Records that begin with their size grow at the end only: the places of their members stay. scripts/check-abi lets
// them grow.
static_assert(offsetof(tvmeta_Photo, format) == 4);
static_assert(offsetof(tvmeta_Photo, present) == 8);
static_assert(offsetof(tvmeta_Photo, brokenAt) == 32);
static_assert(offsetof(tvmeta_Photo, width) == 40);
static_assert(offsetof(tvmeta_Photo, make) == 52);
static_assert(offsetof(tvmeta_Photo, lens) == 180);
static_assert(offsetof(tvmeta_Photo, exposureTime) == 376);
static_assert(offsetof(tvmeta_Photo, isoSpeed) == 440);
static_assert(offsetof(tvmeta_Photo, captureTime) == 472);
static_assert(offsetof(tvmeta_Photo, latitude) == 496);
static_assert(offsetof(tvmeta_Photo, gpsTime) == 520);
static_assert(offsetof(tvmeta_Photo, blocks) == 528);
static_assert(offsetof(tvmeta_Result, orientation) == 28);
static_assert(offsetof(tvmeta_Result, path) == 32);
static_assert(offsetof(tvmeta_Result, rowPitch) == 48);
static_assert(offsetof(tvmeta_Result, keywords) == 104);
static_assert(offsetof(tvmeta_Result, method) == 116);
static_assert(offsetof(tvmeta_Result, settings) == 120);
static_assert(offsetof(tvmeta_Result, photo) == 144);
static_assert(offsetof(tvmeta_BracketOptions, count) == 4);
static_assert(offsetof(tvmeta_BracketOptions, gap) == 8);
static_assert(offsetof(tvmeta_BracketSet, confidence) == 4);
static_assert(offsetof(tvmeta_BracketSet, shots) == 8);
static_assert(offsetof(tvmeta_BracketSet, expectedShots) == 16);
static_assert(offsetof(tvmeta_Shot, folder) == 8);
static_assert(offsetof(tvmeta_Shot, camera) == 24);
static_assert(offsetof(tvmeta_Shot, captureTime) == 48);
static_assert(offsetof(tvmeta_Shot, exposureTime) == 64);
static_assert(offsetof(tvmeta_Shot, height) == 92);
