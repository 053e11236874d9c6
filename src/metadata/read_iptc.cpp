// Copies the IPTC block of a photograph (IPTC-IIM 4.1), as the metadata record locates it.
#include "support/file.h"
#include "tvmeta.h"

using namespace tvmeta;

std::int32_t read_iptc(const char* path, std::int32_t count, std::int32_t offset, unsigned char* buffer) noexcept {
    constexpr unsigned char DatasetMarker = 0x1C;
    const File file = openUnbuffered(path, Access::Read);
    const std::int64_t size = file ? fileSize(file.get()) : -1;
    if (size <= 0 || isDirectory(file.get()) || (buffer == nullptr && count > 0)) {
        return READ_IPTC_UNREADABLE;
    }
    // The region must end before the file's last byte.
    if (count <= 0 || std::int64_t{offset} + count >= size || !seekTo(file.get(), offset)) {
        return READ_IPTC_OUTSIDE;
    }
    const std::size_t read = std::fread(buffer, 1, static_cast<std::size_t>(count), file.get());
    if (read == 0) {
        return READ_IPTC_UNREADABLE;
    }
    if (buffer[0] != DatasetMarker) {
        return READ_IPTC_NOT_IPTC;
    }
    return read == static_cast<std::size_t>(count) ? count : READ_IPTC_UNREADABLE;
}
