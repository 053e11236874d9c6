// Reads a photograph into the metadata record.
#include "metadata/directory_parsers.h"
#include "metadata/jpeg.h"
#include "metadata/psd.h"
#include "support/file.h"
#include "tvmeta.h"

#include <cstdint>
#include <cstring>

using namespace tvmeta;

namespace {

// Finds the TIFF structure in its container, and moves to it. Returns its file offset.
Result<std::int32_t> findTiff(StreamReader& reader, std::int32_t fileType, ExifInfo& info) {
    switch (fileType) {
    case FILE_TYPE_JPEG:
        return findTiffInJpeg(reader, info);
    case FILE_TYPE_PSD:
        return findTiffInPsd(reader);
    default:
        return 0;
    }
}

} // namespace

void init_exifInfo(ExifInfo* info) noexcept {
    if (info != nullptr) {
        std::memset(info, 0, sizeof *info); // clears padding too: callers compare and store records as bytes
    }
}

std::int32_t getExifData(const char* path, std::int32_t fileType, ExifInfo* info) noexcept {
    if (info == nullptr) {
        return GET_EXIF_UNREADABLE;
    }
    init_exifInfo(info);
    const File file = openUnbuffered(path, "rb");
    if (!file) {
        return GET_EXIF_UNREADABLE;
    }
    StreamReader reader(file.get(), 0, fileType == FILE_TYPE_JPEG ? window_size::Jpeg : window_size::Tiff);
    const Result<std::int32_t> base = findTiff(reader, fileType, *info);
    if (!base) {
        return base.code();
    }
    WorkBudget budget;
    const std::int32_t result = readImageDirectories(reader, *base, fileType, budget, *info);
    if (result != GET_EXIF_OK || fileType != FILE_TYPE_JPEG) {
        return result;
    }
    return readPhotoshopSegment(reader, budget, *info);
}
