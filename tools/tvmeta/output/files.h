// Whole files and parts of them as bytes; every function throws Failure with the system's reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<unsigned char>;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Throws Failure if the path names a folder, or a pipe or device, which can make a reader wait for ever or never end.
void requireRegularFile(const std::string& path);

// A file for reading; anything but a regular file is refused.
File openFile(const std::string& path);

// The whole file; one of 2 GiB or more is refused, since the library counts in signed 32-bit numbers.
Bytes readFile(const std::string& path);

// A place in a file; a length of 0 means that there is none.
struct Region {
    int64_t offset = 0;
    int64_t length = 0;
};

// The bytes of a region that a file announces. Refused before memory is reserved if the file does not contain it.
Bytes readRegion(const std::string& path, const Region& region);

// At most `length` bytes from the start of a file.
Bytes readStart(const std::string& path, size_t length);

// Overwrites `copy` with the content of a regular file.
void copyFile(const std::string& path, const std::string& copy);

// Throws Failure with the path and the system's reason.
[[noreturn]] void failWithErrno(const std::string& path);

// A size for the library, which counts in signed 32-bit numbers. Throws Failure if it exceeds them.
int32_t checkedSize(uint64_t size);

template <typename Container>
int32_t librarySize(const Container& content) {
    return checkedSize(std::size(content));
}

// The size of a text with its terminating zero.
inline int32_t textSize(const std::string& text) {
    return checkedSize(uint64_t{text.size()} + 1);
}

inline std::string_view asText(std::span<const unsigned char> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
