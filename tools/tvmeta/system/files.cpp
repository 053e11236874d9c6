#include "system/files.h"

#include "base/failure.h"
#include "system/paths.h"
#include "system/system.h"
#include "system/temporary_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <new>
#include <system_error>

namespace {

// The largest size that the library accepts.
constexpr size_t SizeLimit = std::numeric_limits<int32_t>::max();

std::unique_ptr<SpoolFile> spooledInput() {
    const std::string name(StandardStream);
    auto spool = std::make_unique<SpoolFile>();
    readPieces(stdin, name, [&](std::string_view piece) { writeBytes(spool->stream(), piece, name); });
    if (std::fflush(spool->stream()) != 0) {
        failWithErrno(name);
    }
    return spool;
}

void requireRegularFile(const std::string& path) {
    const FileKind kind = fileKind(readablePath(path));
    if (kind == FileKind::Folder) {
        throw Failure(path, "is a folder");
    }
    if (kind == FileKind::Device) {
        throw Failure(path, "not a regular file but a pipe or device");
    }
}

} // namespace

std::string problemOf(const std::exception& problem) {
    if (dynamic_cast<const std::bad_alloc*>(&problem) != nullptr) {
        return "not enough memory";
    }
    const auto* const file = dynamic_cast<const std::filesystem::filesystem_error*>(&problem);
    return file == nullptr ? problem.what() : nameOf(file->path1()) + ": " + file->code().message();
}

void failWithErrno(const std::string& path) {
    throw Failure(path, std::strerror(errno));
}

std::string readablePath(const std::string& name) {
    if (name != StandardStream) {
        return systemPath(name);
    }
    static const std::unique_ptr<SpoolFile> input = spooledInput(); // a pipe can be read only once
    return input->path();
}

std::vector<std::string> readNames(const std::string& list) {
    std::vector<std::string> names;
    const Bytes bytes = readFile(list);
    for (std::string_view rest = asText(bytes); !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!name.empty()) { // an empty name is between two sets
            names.emplace_back(name);
        }
    }
    return names;
}

File openFile(const std::string& path) {
    requireRegularFile(path);
    File file(std::fopen(readablePath(path).c_str(), "rb"));
    if (!file) {
        failWithErrno(path);
    }
    return file;
}

Bytes readFile(const std::string& path) {
    requireRegularFile(path);
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(pathOf(readablePath(path)), error);
    const bool isTooLarge = !error && size >= SizeLimit; // unknown in /proc
    Bytes bytes = isTooLarge ? Bytes() : readStart(path, SizeLimit);
    if (isTooLarge || bytes.size() == SizeLimit) {
        throw Failure(path, "larger than 2 GiB");
    }
    return bytes;
}

Bytes readStart(const std::string& path, size_t length) {
    const File file = openFile(path);
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

int32_t checkedSize(uint64_t size) {
    if (size > SizeLimit) {
        throw Failure(std::to_string(size) + " bytes exceed the limit of 2 GiB");
    }
    return static_cast<int32_t>(size);
}

void readPieces(std::FILE* file, const std::string& path, const std::function<void(std::string_view piece)>& take) {
    std::array<char, 65536> piece;
    while (const size_t size = std::fread(piece.data(), 1, piece.size(), file)) {
        take({piece.data(), size});
    }
    if (std::ferror(file) != 0) {
        failWithErrno(path);
    }
}

void writeBytes(std::FILE* file, std::string_view bytes, const std::string& path) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        failWithErrno(path);
    }
}

void copyFile(const std::string& path, const std::string& copy) {
    const File from = openFile(path);
    const File to(std::fopen(copy.c_str(), "wb"));
    if (!to) {
        failWithErrno(path);
    }
    readPieces(from.get(), path, [&](std::string_view piece) { writeBytes(to.get(), piece, path); });
    if (std::fflush(to.get()) != 0) {
        failWithErrno(path);
    }
}
