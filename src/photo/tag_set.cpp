#include "photo/tag_set.h"

#include "support/tiff_vocabulary.h"

#include <algorithm>
#include <span>

namespace tvmeta {

namespace {

// In ascending order, for the search.
constexpr std::uint16_t Wanted[] = {
    rw2_tag::IsoSpeed,
    tiff_tag::ImageDescription,
    tiff_tag::Make,
    tiff_tag::Model,
    tiff_tag::Orientation,
    tiff_tag::Software,
    tiff_tag::Artist,
    tiff_tag::Rating,
    tiff_tag::Copyright,
    exif_tag::ExposureTime,
    exif_tag::FNumber,
    exif_tag::ExposureProgram,
    exif_tag::IsoSpeedRatings,
    exif_tag::StandardOutputSensitivity,
    exif_tag::RecommendedExposureIndex,
    exif_tag::IsoSpeed,
    exif_tag::DateTimeOriginal,
    exif_tag::DateTimeDigitized,
    exif_tag::OffsetTimeOriginal,
    exif_tag::OffsetTimeDigitized,
    exif_tag::ShutterSpeedValue,
    exif_tag::ApertureValue,
    exif_tag::ExposureBiasValue,
    exif_tag::MeteringMode,
    exif_tag::Flash,
    exif_tag::FocalLength,
    exif_tag::SubSecTimeOriginal,
    exif_tag::SubSecTimeDigitized,
    tiff_tag::XpTitle,
    tiff_tag::XpAuthor,
    tiff_tag::XpKeywords,
    exif_tag::ExposureIndex,
    exif_tag::ExposureMode,
    exif_tag::WhiteBalance,
    exif_tag::FocalLengthIn35mmFilm,
    exif_tag::BodySerialNumber,
    exif_tag::LensModel,
    tiff_tag::CameraSerialNumber,
};
static_assert(std::ranges::is_sorted(Wanted));

} // namespace

void TagSet::offer(const tvmeta_Tag& tag) {
    const bool isCamera = tag.directory == TVMETA_IMAGE || tag.directory == TVMETA_EXIF_DIRECTORY;
    const bool isWanted = isCamera ? std::ranges::binary_search(Wanted, tag.tag)
                                   : tag.directory == TVMETA_GPS_DIRECTORY && tag.tag <= gps_tag::DateStamp;
    if (isWanted && count_ < tags_.size() && find(tag.directory, tag.tag) == nullptr) {
        tags_[count_++] = tag;
    }
}

const tvmeta_Tag* TagSet::find(std::int32_t directory, std::uint16_t tag) const {
    const auto tags = std::span(tags_).first(count_);
    const auto found =
        std::ranges::find_if(tags, [=](const tvmeta_Tag& t) { return t.directory == directory && t.tag == tag; });
    return found != tags.end() ? &*found : nullptr;
}

const tvmeta_Tag* TagSet::exif(std::uint16_t tag) const {
    const tvmeta_Tag* const found = find(TVMETA_EXIF_DIRECTORY, tag);
    return found != nullptr ? found : image(tag);
}

} // namespace tvmeta
