#include "writers/result_directories.h"

#include "writers/exif_directories.h"
#include "writers/tiff_file.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tvmeta {

namespace {

constexpr std::size_t OwnFields = 24; // in the image directory; others have fewer

bool isSrgb(Bytes profile) {
    char name[32];
    const auto size = static_cast<std::int32_t>(std::min<std::size_t>(profile.size(), INT32_MAX));
    return get_profile_name(size, profile.data(), name) > 0 && std::string_view(name, 4) == "sRGB";
}

void addVersion(DirectoryBuilder& directory, std::uint16_t tag, std::uint16_t type, Bytes version) {
    if (!directory.has(tag)) {
        directory.addBlock(tag, type, version);
    }
}

} // namespace

constexpr ResultDirectories::Slot ResultDirectories::Slots[] = {
    {TVMETA_IMAGE, &ResultDirectories::image},
    {TVMETA_EXIF_DIRECTORY, &ResultDirectories::exif_},
    {TVMETA_GPS_DIRECTORY, &ResultDirectories::gps_},
    {TVMETA_INTEROPERABILITY, &ResultDirectories::interoperability_},
};

ResultDirectories::ResultDirectories(const ResultContents& contents, DirectoryForm form)
    : contents_(contents), form_(form) {
    const auto entries = contents.entries.entries();
    const std::size_t size = entries.size() + std::size(Slots) * OwnFields;
    fields_ = ZeroedBuffer(size * sizeof(DirectoryBuilder::Field));
    if (!fields_) {
        return;
    }
    std::span rest(reinterpret_cast<DirectoryBuilder::Field*>(fields_.data()), size);
    for (const Slot& slot : Slots) {
        const auto count =
            std::ranges::count(entries, slot.directory, [](const KeptEntry& entry) { return entry.tag.directory; });
        const std::size_t room = static_cast<std::size_t>(count) + OwnFields;
        this->*slot.builder = DirectoryBuilder(rest.first(room), form);
        rest = rest.subspan(room);
    }
}

void ResultDirectories::add(const tvmeta_Result& result, const PixelLayout* layout) {
    if (layout != nullptr) {
        addPixelFields(image, *layout, form_);
        if (layout->isFloat) {
            image.addShorts(tiff_tag::SampleFormat, layout->samples, IeeeFloat);
        }
    }
    addPhotographs();
    addTexts(result, layout != nullptr && layout->isFloat);
    if (layout != nullptr) {
        addBlocks(image, contents_.icc, {contents_.xmp.data(), contents_.xmp.size()},
                  {contents_.iptc.data(), contents_.iptc.size()});
    }
    addExif(result);
    link();
}

void ResultDirectories::addPhotographs() {
    for (const KeptEntry& entry : contents_.entries.entries()) {
        const auto* const slot = std::ranges::find(Slots, entry.tag.directory, &Slot::directory);
        if (slot != std::end(Slots)) {
            (this->*slot->builder)
                .addBytes(entry.tag.tag, entry.tag.type, static_cast<std::size_t>(entry.tag.count), entry.value,
                          entry.value.size());
        }
    }
}

void ResultDirectories::addTexts(const tvmeta_Result& result, bool isFloat) {
    constexpr std::int32_t UsualResolution = 300;
    const auto addText = [this](std::uint16_t tag, std::string_view text) {
        image.addText(tag, text, text.size() + 1);
    };
    image.addShort(tiff_tag::Orientation, writtenOrientation(result.orientation));
    if (!image.has(tiff_tag::XResolution) && !image.has(tiff_tag::YResolution) &&
        !image.has(tiff_tag::ResolutionUnit)) {
        addResolution(image, result.resolution > 0 ? result.resolution : UsualResolution);
    }
    if (result.software != nullptr) {
        addText(tiff_tag::Software, result.software);
    } else if (isFloat && !image.has(tiff_tag::Software)) {
        addText(tiff_tag::Software, FloatSoftware);
    }
    if (result.modifyDate != nullptr) {
        addText(tiff_tag::DateTime, result.modifyDate);
    }
}

// What EXIF requires of each of its directories, and what it says of the picture itself.
void ResultDirectories::addExif(const tvmeta_Result& result) {
    static constexpr std::array<unsigned char, 4> ExifVersion = {'0', '2', '3', '2'};
    static constexpr std::array<unsigned char, 4> FlashpixVersion = {'0', '1', '0', '0'};
    static constexpr std::array<unsigned char, 4> GpsVersion = {2, 3, 0, 0};
    constexpr std::uint16_t Srgb = 1;
    constexpr std::uint16_t Uncalibrated = 0xFFFF;
    if (gps_.entries() > 0) {
        addVersion(gps_, gps_tag::VersionId, tiff_type::Byte, GpsVersion);
    }
    if (exif_.entries() == 0 && interoperability_.entries() == 0) {
        return;
    }
    addVersion(exif_, exif_tag::ExifVersion, tiff_type::Undefined, ExifVersion);
    addVersion(exif_, exif_tag::FlashpixVersion, tiff_type::Undefined, FlashpixVersion);
    if (!exif_.has(exif_tag::ColorSpace)) {
        exif_.addShort(exif_tag::ColorSpace, isSrgb(contents_.icc) ? Srgb : Uncalibrated);
    }
    if (result.width > 0 && result.height > 0) {
        exif_.addLong(exif_tag::PixelXDimension, static_cast<std::uint32_t>(result.width));
        exif_.addLong(exif_tag::PixelYDimension, static_cast<std::uint32_t>(result.height));
    }
}

// Refers to the directories, once all of their fields are known.
void ResultDirectories::link() {
    exif_.addDirectory(exif_tag::InteroperabilityIfd, interoperability_);
    image.addDirectory(tiff_tag::ExifIfd, exif_);
    image.addDirectory(tiff_tag::GpsIfd, gps_);
}

} // namespace tvmeta
