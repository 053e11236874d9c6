#include "system/file_copy.h"

#include "system/files.h"

#include <array>

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
