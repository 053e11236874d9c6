// Reads a photograph into the metadata record.
#include "metadata/directory_parsers.h"

#include <cstdint>
#include <cstring>

using namespace tvmeta;

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
