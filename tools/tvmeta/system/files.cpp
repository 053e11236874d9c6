#include "system/files.h"

#include "output/failure.h"
#include "system/paths.h"
#include "system/system.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

// The largest size that the library accepts.
constexpr size_t SizeLimit = std::numeric_limits<int32_t>::max();

Bytes readBytes(const std::string& path, int64_t offset, size_t length) {
    const File file = openFile(path);
    if (!seekTo(file.get(), offset)) {
        failWithErrno(path);
    }
    Bytes bytes;
    std::array<unsigned char, 65536> piece;
    while (bytes.size() < length) {
        const size_t wanted = std::min(piece.size(), length - bytes.size());
        const size_t got = std::fread(piece.data(), 1, wanted, file.get());
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(got));
        if (got < wanted) {
            break;
        }
    }
    if (std::ferror(file.get())) {
        failWithErrno(path);
    }
    return bytes;
}

} // namespace

void failWithErrno(const std::string& path) {
    throw Failure(path, std::strerror(errno));
}

void requireRegularFile(const std::string& path) {
    const FileKind kind = fileKind(path);
    if (kind == FileKind::Folder) {
        throw Failure(path, "is a folder");
    }
    if (kind == FileKind::Device) {
        throw Failure(path, "not a regular file but a pipe or device");
    }
}

File openFile(const std::string& path) {
    requireRegularFile(path);
    File file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        failWithErrno(path);
    }
    return file;
}

Bytes readFile(const std::string& path) {
    Bytes bytes = readBytes(path, 0, SizeLimit);
    if (bytes.size() == SizeLimit) {
        throw Failure(path, "larger than 2 GiB");
    }
    return bytes;
}

Bytes readStart(const std::string& path, size_t length) {
    return readBytes(path, 0, length);
}

Bytes readRegion(const std::string& path, const Region& region) {
    std::error_code error;
    const std::uintmax_t fileSize = std::filesystem::file_size(pathOf(path), error);
    if (error) {
        throw Failure(path, error.message());
    }
    const auto offset = static_cast<std::uintmax_t>(region.offset), length = static_cast<std::uintmax_t>(region.length);
    if (offset > fileSize || length > fileSize - offset) {
        throw Failure(path, "it refers to " + std::to_string(region.length) + " bytes at offset " +
                                std::to_string(region.offset) + " but has only " + std::to_string(fileSize) + " bytes");
    }
    if (length >= SizeLimit) {
        throw Failure(path, "contains a block of more than 2 GiB");
    }
    return readBytes(path, region.offset, static_cast<size_t>(length));
}

int32_t checkedSize(uint64_t size) {
    if (size > SizeLimit) {
        throw Failure(std::to_string(size) + " bytes exceed the limit of 2 GiB");
    }
    return static_cast<int32_t>(size);
}
