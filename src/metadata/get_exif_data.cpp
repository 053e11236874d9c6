// From a file to the metadata record.
#include "metadata/containers.h"
#include "metadata/status.h"
#include "support/file.h"

#include <cstdint>
#include <cstring>

using namespace tvmeta;

namespace {

TiffPlace findTiff(StreamReader& reader, std::int32_t fileType, ExifInfo& info) noexcept {
    switch (fileType) {
    case FILE_TYPE_JPEG:
        return findTiffInJpeg(reader, info);
    case FILE_TYPE_PSD:
        return findTiffInPsd(reader);
    default:
        return {status::Done, 0};
    }
}

} // namespace

void init_exifInfo(ExifInfo* info) noexcept {
    if (info != nullptr) {
        std::memset(info, 0, sizeof *info); // padding too: callers compare and store records as bytes
    }
}

std::int32_t getExifData(const char* path, std::int32_t fileType, ExifInfo* info) noexcept {
    if (info == nullptr) {
        return status::Broken;
    }
    init_exifInfo(info);
    const File file = openUnbuffered(path, "rb");
    if (!file) {
        return status::Broken;
    }
    StreamReader reader(file.get(), 0);
    const TiffPlace place = findTiff(reader, fileType, *info);
    if (place.status != status::Done) {
        return place.status;
    }
    WorkBudget budget;
    const std::int32_t result = readImageDirectories(reader, place.base, fileType, budget, *info);
    if (result != status::Done || fileType != FILE_TYPE_JPEG) {
        return result;
    }
    return readPhotoshopSegment(reader, budget, *info);
}
