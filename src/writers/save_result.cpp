// Saves a result with everything that its photograph says: a TIFF file, or the directories alone.
#include "photo/open_photo.h"
#include "settings/methods.h"
#include "support/text_numbers.h"
#include "writers/pixel_writer.h"
#include "writers/result_directories.h"
#include "writers/result_iptc.h"
#include "writers/tiff_file.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

using namespace tvmeta;

namespace {

constexpr std::uint64_t MaxClassicSize = UINT32_MAX;
constexpr std::size_t MaxResultData = std::size_t{1} << 62;

// Null with a size above 0 is a mistake of the caller, as is a negative size.
bool isBlock(const void* bytes, std::int64_t size) {
    return size == 0 || (size > 0 && bytes != nullptr);
}

bool isDate(const char* text) {
    constexpr std::string_view Form = "0000:00:00 00:00:00";
    return text == nullptr ||
           std::ranges::equal(std::string_view(text), Form, {}, [](char c) { return isDigit(c) ? '0' : c; });
}

// A caller that was compiled with a later version has more members; those that it uses would be ignored.
bool isKnownSize(const tvmeta_Result& result) {
    constexpr std::size_t MaxRecordSize = 1 << 16;
    if (result.recordSize < sizeof result || result.recordSize > MaxRecordSize) {
        return false;
    }
    const std::span bytes(reinterpret_cast<const unsigned char*>(&result), result.recordSize);
    return std::ranges::all_of(bytes.subspan(sizeof result), [](unsigned char byte) { return byte == 0; });
}

bool isValid(const tvmeta_Result* result) {
    return result != nullptr && isKnownSize(*result) && isBlock(result->icc, result->iccSize) &&
           isBlock(result->iptc, result->iptcSize) && isBlock(result->xmp, result->xmpSize) &&
           (result->photo == nullptr || isUsable(result->photo)) &&
           areKeywords(result->keywords, result->keywordCount) && isDate(result->modifyDate) &&
           result->resolution >= 0 && result->resolution <= INT32_MAX / 1000 &&
           (result->method == METHOD_NONE || (isMethodCode(result->method) && result->settings != nullptr));
}

std::int32_t statusOf(std::int32_t failure) {
    const bool isMemory = failure == NoDirectoryMemory || failure == BUF2TIF_NO_PIXEL_MEMORY;
    return isMemory ? TVMETA_NO_MEMORY : TVMETA_WRITE_FAILED;
}

std::int32_t write(const tvmeta_Result& result, const PixelLayout& layout, ResultDirectories& directories) {
    const Result<std::int32_t> rows =
        writeTiffFile(result.path, PixelWriter(result.pixels, static_cast<std::ptrdiff_t>(result.rowPitch), layout),
                      layout.dataSize(), directories.image, directories.form());
    return rows ? static_cast<std::int32_t>(TVMETA_OK) : statusOf(rows.code());
}

std::int32_t saveTiff(const tvmeta_Result& result, const PixelLayout& layout, LossList& losses) {
    ResultContents contents;
    if (const std::int32_t status = contents.collect(result, true, losses); status != TVMETA_OK) {
        return status;
    }
    for (DirectoryForm form = {.isAligned = true};; form.isBig = true) {
        ResultDirectories directories(contents, form);
        if (!directories) {
            return TVMETA_NO_MEMORY;
        }
        directories.add(result, &layout);
        const std::uint64_t size =
            std::uint64_t{form.headerSize()} + form.aligned(layout.dataSize()) + directories.image.size();
        if (form.isBig || size <= MaxClassicSize) {
            const std::int32_t status = write(result, layout, directories);
            return status == TVMETA_OK ? losses.count() : status;
        }
    }
}

std::int64_t buildExif(const tvmeta_Result& result, std::span<unsigned char> buffer, bool isMeasuring,
                       LossList& losses) {
    ResultContents contents;
    if (const std::int32_t status = contents.collect(result, false, losses); status != TVMETA_OK) {
        return status;
    }
    ResultDirectories directories(contents, {.isAligned = true});
    if (!directories) {
        return TVMETA_NO_MEMORY;
    }
    directories.add(result, nullptr);
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

bool hasTooLargeBlock(const tvmeta_Result& result) {
    constexpr std::int64_t MaxBlock = INT32_MAX; // a TIFF entry has up to 2^32 - 1 bytes; leaves room for keywords
    return std::max({result.iccSize, result.iptcSize, result.xmpSize}) > MaxBlock;
}

// A row before the first or after the last one must be at an address that 64 bits can express.
bool isPitch(std::int64_t pitch, std::int32_t height) {
    const std::int64_t limit = INT64_MAX / std::max(height, 1);
    return pitch <= limit && pitch >= -limit;
}

} // namespace

std::int32_t tvmeta_save_tiff(const tvmeta_Result* result, tvmeta_Loss* losses, std::int32_t capacity) noexcept {
    if (!isValid(result) || result->path == nullptr || capacity < 0 || (losses == nullptr && capacity > 0) ||
        (result->height > 0 && result->pixels == nullptr) || !isPitch(result->rowPitch, result->height)) {
        return TVMETA_BAD_ARGUMENT;
    }
    if (hasTooLargeBlock(*result)) {
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
    if (hasTooLargeBlock(*result)) {
        return TVMETA_TOO_LARGE;
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
