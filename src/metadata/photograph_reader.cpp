// Reads a photograph into the metadata record.
#include "metadata/directory_parsers.h"

#include <cstdint>
#include <cstring>

using namespace tvmeta;

namespace {

std::int32_t readJpeg(StreamReader& reader, WorkBudget& budget, ExifInfo& info) {
    const Result<ExifSegment> exif = findExifSegment(reader);
    if (!exif) {
        return exif.code();
    }
    if (exif->tiffBase > 0) {
        reader.seek(exif->end);
        if (readXmpSegment(reader, info) != GET_EXIF_OK) {
            return GET_EXIF_UNREADABLE;
        }
        reader.seek(exif->tiffBase);
    }
    const std::int32_t result = readImageDirectories(reader, exif->tiffBase, FILE_TYPE_JPEG, budget, info);
    return result == GET_EXIF_OK ? readPhotoshopSegment(reader, budget, info) : result;
}

std::int32_t readPsd(StreamReader& reader, WorkBudget& budget, ExifInfo& info) {
    const Result<std::int32_t> base = findTiffInPsd(reader);
    return base ? readImageDirectories(reader, *base, FILE_TYPE_PSD, budget, info) : base.code();
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
    const File file = openUnbuffered(path, Access::Read);
    if (!file) {
        return GET_EXIF_UNREADABLE;
    }
    StreamReader reader(file.get(), 0, fileType == FILE_TYPE_JPEG ? window_size::Jpeg : window_size::Tiff);
    WorkBudget budget;
    switch (fileType) {
    case FILE_TYPE_JPEG:
        return readJpeg(reader, budget, *info);
    case FILE_TYPE_PSD:
        return readPsd(reader, budget, *info);
    default:
        return readImageDirectories(reader, 0, fileType, budget, *info);
    }
}
