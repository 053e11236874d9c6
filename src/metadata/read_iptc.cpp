// The IPTC block of a source file (IPTC-IIM 4.1), as the metadata record locates it.
#include "support/file.h"
#include "tvmeta.h"

std::int32_t read_iptc(const char* path, std::int32_t count, std::int32_t offset, unsigned char* buffer) noexcept {
    constexpr unsigned char DatasetMarker = 0x1C;
    constexpr std::int32_t Outside = 0;
    constexpr std::int32_t Unreadable = -1;
    constexpr std::int32_t NotIptc = -2;
    if (count <= 0) {
        return Outside;
    }
    const tvmeta::File file = tvmeta::openUnbuffered(path, "rb");
    if (!file || buffer == nullptr) {
        return Unreadable;
    }
    const std::int64_t size = tvmeta::fileSize(file.get());
    if (size <= 0 || tvmeta::isDirectory(file.get())) {
        return Unreadable;
    }
    // The region must end before the file's last byte.
    if (std::int64_t{offset} + count >= size || !tvmeta::seekTo(file.get(), offset)) {
        return Outside;
    }
    const std::size_t read = std::fread(buffer, 1, static_cast<std::size_t>(count), file.get());
    if (read == 0) {
        return Unreadable;
    }
    if (buffer[0] != DatasetMarker) {
        return NotIptc;
    }
    return read == static_cast<std::size_t>(count) ? count : Unreadable;
}
