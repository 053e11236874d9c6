// Saves a result with everything that its photograph says: a TIFF file, or the directories alone.
#include "metadata/byte_cursor.h"
#include "photo/read_block.h"
#include "photo/utf8.h"
#include "settings/methods.h"
#include "support/bytes.h"
#include "support/zeroed_buffer.h"
#include "tvmeta_photo.h"
#include "writers/exif_directories.h"
#include "writers/photo_entries.h"
#include "writers/result_iptc.h"
#include "writers/result_xmp.h"
#include "writers/tiff_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

namespace tvmeta {

namespace {

constexpr std::uint64_t MaxClassicSize = UINT32_MAX;
constexpr std::size_t MaxResultData = std::size_t{1} << 62;
constexpr std::size_t OwnFields = 24; // in the image directory; others have fewer

using Bytes = std::span<const unsigned char>;

Bytes bytesOf(const void* bytes, std::int64_t size) {
    return {static_cast<const unsigned char*>(bytes), static_cast<std::size_t>(size)};
}

// Null with a size above 0 is a mistake of the caller, as is a negative size.
bool isBlock(const void* bytes, std::int64_t size) {
    return size == 0 || (size > 0 && bytes != nullptr);
}

bool areKeywords(const tvmeta_Result& result) {
    constexpr std::size_t MaxKeyword = 0x7FFF; // of an IPTC dataset without an extended size
    if (result.keywordCount < 0 || (result.keywordCount > 0 && result.keywords == nullptr)) {
        return false;
    }
    for (std::int32_t i = 0; i < result.keywordCount; ++i) {
        const char* const keyword = result.keywords[i];
        if (keyword == nullptr || keyword[0] == '\0' || !isUtf8(keyword) || std::strlen(keyword) > MaxKeyword) {
            return false;
        }
    }
    return true;
}

bool isDate(const char* text) {
    constexpr std::string_view Form = "0000:00:00 00:00:00";
    return text == nullptr ||
           std::ranges::equal(std::string_view(text), Form, {}, [](char c) { return c >= '0' && c <= '9' ? '0' : c; });
}

bool isValid(const tvmeta_Result* result) {
    return result != nullptr && result->recordSize == sizeof *result && isBlock(result->icc, result->iccSize) &&
           isBlock(result->iptc, result->iptcSize) && isBlock(result->xmp, result->xmpSize) &&
           (result->photo == nullptr || isUsable(result->photo)) && areKeywords(*result) &&
           isDate(result->modifyDate) && result->resolution >= 0 && result->resolution <= INT32_MAX / 1000 &&
           (result->method == METHOD_NONE || (isMethodCode(result->method) && result->settings != nullptr));
}

// Everything of the photograph and the caller that goes into the directories.
struct Contents {
    tvmeta_Photo photo{};
    PhotoEntries entries;
    ZeroedBuffer photoIptc;
    ZeroedBuffer photoXmp;
    IptcResult iptc;
    std::optional<ZeroedBuffer> xmp;
    Bytes icc;
};

// Loads a block of the photograph, or names it as lost. Returns false without memory.
bool loadPhotoBlock(OpenPhoto& photo, std::int32_t block, ZeroedBuffer& bytes, LossList& losses) {
    bytes = loadBlock(photo, block);
    if (bytes && bytes.size() == 0 && photo.layout.has(block)) {
        losses.addBlock(block, TVMETA_LOSS_BLOCK);
    }
    return static_cast<bool>(bytes);
}

std::int32_t readPhotograph(const tvmeta_Result& result, Contents& contents, LossList& losses) {
    contents.photo.recordSize = sizeof contents.photo;
    const std::int32_t status = tvmeta_read_photo(result.photo, &contents.photo);
    if (status != TVMETA_OK && status != TVMETA_BROKEN) {
        return status;
    }
    if (status == TVMETA_BROKEN) { // nobody knows what else the file has
        losses.addBlock(TVMETA_EXIF, TVMETA_LOSS_BROKEN);
    }
    const bool hasSize = result.width > 0 && result.height > 0;
    const bool isSameSize =
        !hasSize || (result.width == contents.photo.width && result.height == contents.photo.height);
    const bool isFloat = result.bitsCode == 32 || result.bitsCode == 3216;
    const KeptValues kept = {isSameSize, result.resolution == 0, result.software == nullptr,
                             result.iccSize == 0 && !isFloat};
    if (contents.photo.blocks[TVMETA_EXIF].isCompressed != 0) {
        losses.addBlock(TVMETA_EXIF, TVMETA_LOSS_BLOCK);
    }
    return contents.entries.load(*result.photo, kept, losses);
}

std::int32_t readBlocks(const tvmeta_Result& result, Contents& contents, LossList& losses) {
    if (result.photo == nullptr) {
        return TVMETA_OK;
    }
    OpenPhoto photo(*result.photo);
    photo.walkToEnd();
    if ((result.iptc == nullptr && !loadPhotoBlock(photo, TVMETA_IPTC, contents.photoIptc, losses)) ||
        (result.xmp == nullptr && !loadPhotoBlock(photo, TVMETA_XMP, contents.photoXmp, losses))) {
        return TVMETA_NO_MEMORY;
    }
    return photo.reader.failed() ? TVMETA_READ_FAILED : TVMETA_OK;
}

std::int32_t makeIptc(const tvmeta_Result& result, Contents& contents, LossList& losses) {
    const Bytes block = result.iptc != nullptr ? bytesOf(result.iptc, result.iptcSize) : contents.photoIptc.bytes();
    const std::span keywords(result.keywords, static_cast<std::size_t>(result.keywordCount));
    contents.iptc = withKeywords(block, keywords);
    if (contents.iptc.problem == IptcProblem::OtherEncoding) { // keywords in UTF-8 go to XMP alone
        losses.addBlock(TVMETA_IPTC, TVMETA_LOSS_CLAMPED);
        contents.iptc = withKeywords(block, {});
    }
    return contents.iptc.problem == IptcProblem::NoMemory ? TVMETA_NO_MEMORY : TVMETA_OK;
}

std::int32_t makeXmp(const tvmeta_Result& result, Contents& contents, LossList& losses) {
    const std::string_view packet = result.xmp != nullptr
                                        ? std::string_view(result.xmp, static_cast<std::size_t>(result.xmpSize))
                                        : std::string_view(contents.photoXmp.text(), contents.photoXmp.size());
    const std::int32_t method = result.method != METHOD_NONE ? result.method + DescriptionOnly : METHOD_NONE;
    const XmpChanges changes = {
        .width = result.width,
        .height = result.height,
        .orientation = writtenOrientation(result.orientation),
        .settings = packetRequest(method, result.settings),
        .keywords = {result.keywords, static_cast<std::size_t>(result.keywordCount)},
        .iptc = contents.iptc.block.bytes(),
        .isPhotographs = result.xmp == nullptr,
    };
    contents.xmp = resultXmp(packet, changes, losses);
    return contents.xmp ? TVMETA_OK : TVMETA_NO_MEMORY;
}

// A profile for another number of channels would make the file invalid.
void takeProfile(const tvmeta_Result& result, Contents& contents, LossList& losses) {
    constexpr std::size_t ColourSpaceEnd = 20; // ICC.1, profile header
    const Bytes profile = bytesOf(result.icc, result.iccSize);
    const char* const wanted = result.channels >= 3 ? "RGB " : "GRAY";
    if (profile.size() >= ColourSpaceEnd && std::memcmp(profile.data() + ColourSpaceEnd - 4, wanted, 4) != 0) {
        losses.addBlock(TVMETA_ICC, TVMETA_LOSS_BLOCK);
    } else {
        contents.icc = profile;
    }
}

// The directories of a result, and the room for their fields.
class ResultDirectories {
  public:
    ResultDirectories(const Contents& contents, DirectoryForm form) : contents_(contents), form_(form) {
        const std::size_t count = contents.entries.entries().size();
        fields_ = ZeroedBuffer((count + 4 * OwnFields) * sizeof(DirectoryBuilder::Field));
        if (!fields_) {
            return;
        }
        std::span rest(reinterpret_cast<DirectoryBuilder::Field*>(fields_.data()), count + 4 * OwnFields);
        for (DirectoryBuilder* const directory : {&image, &exif, &gps, &interoperability}) {
            const std::size_t room = countOf(kindOf(*directory)) + OwnFields;
            *directory = DirectoryBuilder(rest.first(room), form);
            rest = rest.subspan(room);
        }
    }
    ResultDirectories(const ResultDirectories&) = delete;
    ResultDirectories& operator=(const ResultDirectories&) = delete;

    explicit operator bool() const { return static_cast<bool>(fields_); }
    DirectoryForm form() const { return form_; }

    // Adds the photograph's entries, then the fields that only a result has.
    void addPhotographs() {
        for (const KeptEntry& entry : contents_.entries.entries()) {
            if (DirectoryBuilder* const directory = directoryOf(entry.directory)) {
                directory->addBytes(entry.tag, entry.type, static_cast<std::size_t>(entry.count), entry.value,
                                    entry.value.size());
            }
        }
    }
    void addResults(const tvmeta_Result& result, const PixelLayout* layout);

    // Once all fields are known.
    void link() {
        if (interoperability.entries() > 0) {
            exif.addDirectory(exif_tag::InteroperabilityIfd, interoperability);
        }
        if (exif.entries() > 0) {
            image.addDirectory(tiff_tag::ExifIfd, exif);
        }
        if (gps.entries() > 0) {
            image.addDirectory(tiff_tag::GpsIfd, gps);
        }
    }

    DirectoryBuilder image;
    DirectoryBuilder exif;
    DirectoryBuilder gps;
    DirectoryBuilder interoperability;

  private:
    std::int32_t kindOf(const DirectoryBuilder& directory) const {
        return &directory == &image  ? static_cast<std::int32_t>(TVMETA_IMAGE)
               : &directory == &exif ? static_cast<std::int32_t>(TVMETA_EXIF_DIRECTORY)
               : &directory == &gps  ? static_cast<std::int32_t>(TVMETA_GPS_DIRECTORY)
                                     : static_cast<std::int32_t>(TVMETA_INTEROPERABILITY);
    }
    std::size_t countOf(std::int32_t kind) const {
        return static_cast<std::size_t>(std::ranges::count(contents_.entries.entries(), kind, &KeptEntry::directory));
    }
    DirectoryBuilder* directoryOf(std::int32_t kind) {
        for (DirectoryBuilder* const directory : {&image, &exif, &gps, &interoperability}) {
            if (kindOf(*directory) == kind) {
                return directory;
            }
        }
        return nullptr;
    }
    void addText(std::uint16_t tag, const char* text) {
        image.addText(tag, {text, std::strlen(text)}, std::strlen(text) + 1);
    }
    void addExif(const tvmeta_Result& result);

    const Contents& contents_;
    DirectoryForm form_;
    ZeroedBuffer fields_;
};

void ResultDirectories::addResults(const tvmeta_Result& result, const PixelLayout* layout) {
    constexpr std::int32_t UsualResolution = 300;
    constexpr std::uint16_t IeeeFloat = 3;
    image.addShort(tiff_tag::Orientation, writtenOrientation(result.orientation));
    if (!image.has(tiff_tag::XResolution) && !image.has(tiff_tag::YResolution) &&
        !image.has(tiff_tag::ResolutionUnit)) {
        addResolution(image, result.resolution > 0 ? result.resolution : UsualResolution);
    }
    if (result.software != nullptr) {
        addText(tiff_tag::Software, result.software);
    } else if (layout != nullptr && layout->isFloat && !image.has(tiff_tag::Software)) {
        image.addText(tiff_tag::Software, FloatSoftware, FloatSoftware.size() + 1);
    }
    if (result.modifyDate != nullptr) {
        addText(tiff_tag::DateTime, result.modifyDate);
    }
    if (layout != nullptr) {
        if (layout->isFloat) {
            image.addShorts(tiff_tag::SampleFormat, layout->samples, IeeeFloat);
        }
        const auto addBlock = [&](std::uint16_t tag, std::uint16_t type, Bytes block) {
            if (!block.empty()) {
                image.addBytes(tag, type, block.size(), block, block.size());
            }
        };
        addBlock(tiff_tag::IccProfile, tiff_type::Undefined, contents_.icc);
        addBlock(tiff_tag::Xmp, tiff_type::Byte, {contents_.xmp->data(), contents_.xmp->size()});
        if (contents_.iptc.block.size() > 0) {
            addIptc(image, {contents_.iptc.block.data(), contents_.iptc.block.size()});
        }
    }
    addExif(result);
}

bool isSrgb(Bytes profile) {
    char name[32];
    const auto size = static_cast<std::int32_t>(std::min<std::size_t>(profile.size(), INT32_MAX));
    return get_profile_name(size, profile.data(), name) > 0 && std::string_view(name, 4) == "sRGB";
}

// What EXIF requires of each of its directories, and what it says of the picture itself.
void ResultDirectories::addExif(const tvmeta_Result& result) {
    static constexpr std::array<unsigned char, 4> ExifVersion = {'0', '2', '3', '2'};
    static constexpr std::array<unsigned char, 4> FlashpixVersion = {'0', '1', '0', '0'};
    static constexpr std::array<unsigned char, 4> GpsVersion = {2, 3, 0, 0};
    constexpr std::uint16_t Srgb = 1;
    constexpr std::uint16_t Uncalibrated = 0xFFFF;
    if (exif.entries() > 0 || interoperability.entries() > 0) {
        const auto addVersion = [&](std::uint16_t tag, Bytes version) {
            if (!exif.has(tag)) {
                exif.addBytes(tag, tiff_type::Undefined, version.size(), version, version.size());
            }
        };
        addVersion(exif_tag::ExifVersion, ExifVersion);
        addVersion(exif_tag::FlashpixVersion, FlashpixVersion);
        if (!exif.has(exif_tag::ColorSpace)) {
            exif.addShort(exif_tag::ColorSpace, isSrgb(contents_.icc) ? Srgb : Uncalibrated);
        }
        if (result.width > 0 && result.height > 0) {
            exif.addLong(exif_tag::PixelXDimension, static_cast<std::uint32_t>(result.width));
            exif.addLong(exif_tag::PixelYDimension, static_cast<std::uint32_t>(result.height));
        }
    }
    if (gps.entries() > 0 && !gps.has(gps_tag::VersionId)) {
        gps.addBytes(gps_tag::VersionId, tiff_type::Byte, GpsVersion.size(), GpsVersion, GpsVersion.size());
    }
}

std::int32_t collect(const tvmeta_Result& result, bool withBlocks, Contents& contents, LossList& losses) {
    if (result.photo != nullptr) {
        if (const std::int32_t status = readPhotograph(result, contents, losses); status != TVMETA_OK) {
            return status;
        }
    }
    takeProfile(result, contents, losses); // also decides the colour space of EXIF
    if (!withBlocks) {
        return TVMETA_OK;
    }
    for (const auto step : {readBlocks, makeIptc, makeXmp}) {
        if (const std::int32_t status = step(result, contents, losses); status != TVMETA_OK) {
            return status;
        }
    }
    return TVMETA_OK;
}

std::int32_t statusOf(std::int32_t failure) {
    const bool isMemory = failure == NoDirectoryMemory || failure == BUF2TIF_NO_PIXEL_MEMORY;
    return isMemory ? TVMETA_NO_MEMORY : TVMETA_WRITE_FAILED;
}

// Adds everything to the directories. Returns the size of the file.
std::uint64_t plan(const tvmeta_Result& result, const PixelLayout& layout, ResultDirectories& directories) {
    addPixelFields(directories.image, layout, directories.form());
    directories.addPhotographs();
    directories.addResults(result, &layout);
    directories.link();
    const DirectoryForm form = directories.form();
    return std::uint64_t{form.headerSize()} + form.aligned(layout.dataSize()) + directories.image.size();
}

std::int32_t write(const tvmeta_Result& result, const PixelLayout& layout, ResultDirectories& directories) {
    const Result<std::int32_t> rows =
        writeTiffFile(result.path, PixelWriter(result.pixels, static_cast<std::ptrdiff_t>(result.rowPitch), layout),
                      layout.dataSize(), directories.image, directories.form());
    return rows ? static_cast<std::int32_t>(TVMETA_OK) : statusOf(rows.code());
}

std::int32_t saveTiff(const tvmeta_Result& result, const PixelLayout& layout, LossList& losses) {
    Contents contents;
    if (const std::int32_t status = collect(result, true, contents, losses); status != TVMETA_OK) {
        return status;
    }
    for (const bool isBig : {false, true}) {
        ResultDirectories directories(contents, {.isAligned = true, .isBig = isBig});
        if (!directories) {
            return TVMETA_NO_MEMORY;
        }
        if (plan(result, layout, directories) <= MaxClassicSize || isBig) {
            const std::int32_t status = write(result, layout, directories);
            return status == TVMETA_OK ? losses.count() : status;
        }
    }
    return TVMETA_TOO_LARGE;
}

std::int64_t buildExif(const tvmeta_Result& result, std::span<unsigned char> buffer, bool isMeasuring,
                       LossList& losses) {
    Contents contents;
    if (const std::int32_t status = collect(result, false, contents, losses); status != TVMETA_OK) {
        return status;
    }
    ResultDirectories directories(contents, {.isAligned = true});
    if (!directories) {
        return TVMETA_NO_MEMORY;
    }
    directories.addPhotographs();
    directories.addResults(result, nullptr);
    directories.link();
    const std::size_t size = TiffHeaderSize + directories.image.size();
    if (isMeasuring) {
        return static_cast<std::int64_t>(size);
    }
    if (buffer.size() < size) {
        return TVMETA_TOO_SMALL;
    }
    std::memset(buffer.data(), 0, size);
    writeTiffHeader(buffer.first(TiffHeaderSize), TiffHeaderSize);
    directories.image.write(buffer.subspan(TiffHeaderSize, size - TiffHeaderSize), TiffHeaderSize);
    return static_cast<std::int64_t>(size);
}

// A row before the first or after the last one must be at an address that 64 bits can express.
bool isPitch(std::int64_t pitch, std::int32_t height) {
    const std::int64_t limit = INT64_MAX / std::max(height, 1);
    return pitch <= limit && pitch >= -limit;
}

} // namespace

} // namespace tvmeta

using namespace tvmeta;

std::int32_t tvmeta_save_tiff(const tvmeta_Result* result, tvmeta_Loss* losses, std::int32_t capacity) noexcept {
    if (!isValid(result) || result->path == nullptr || capacity < 0 || (losses == nullptr && capacity > 0) ||
        (result->height > 0 && result->pixels == nullptr) || !isPitch(result->rowPitch, result->height)) {
        return TVMETA_BAD_ARGUMENT;
    }
    constexpr std::int64_t MaxBlock = INT32_MAX; // a TIFF entry has up to 2^32 - 1 bytes; leaves room for keywords
    if (std::max({result->iccSize, result->iptcSize, result->xmpSize}) > MaxBlock) {
        return TVMETA_TOO_LARGE;
    }
    TifImageInfo info{};
    info.width = result->width;
    info.height = result->height;
    info.channels = result->channels;
    info.bitsCode = result->bitsCode;
    info.pixelMode = result->pixelMode;
    const std::optional<PixelLayout> layout = pixelLayout(info, MaxResultData);
    if (!layout) {
        return TVMETA_BAD_ARGUMENT;
    }
    LossList list({losses, static_cast<std::size_t>(capacity)});
    return saveTiff(*result, *layout, list);
}

std::int64_t tvmeta_build_exif(const tvmeta_Result* result, void* buffer, std::int64_t capacity, tvmeta_Loss* losses,
                               std::int32_t lossCapacity, std::int32_t* lossCount) noexcept {
    if (!isValid(result) || capacity < 0 || lossCapacity < 0 || (losses == nullptr && lossCapacity > 0)) {
        return TVMETA_BAD_ARGUMENT;
    }
    LossList list({losses, static_cast<std::size_t>(lossCapacity)});
    const bool isMeasuring = buffer == nullptr;
    const auto size = static_cast<std::size_t>(isMeasuring ? 0 : capacity);
    const std::int64_t written = buildExif(*result, {static_cast<unsigned char*>(buffer), size}, isMeasuring, list);
    if (lossCount != nullptr) {
        *lossCount = list.count();
    }
    return written;
}
