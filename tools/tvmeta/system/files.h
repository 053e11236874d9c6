// Reads, copies and writes files. Functions that fail throw Failure with the system's reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The name of standard input among inputs, and of standard output as an output.
constexpr std::string_view StandardStream = "-";

// The path from which an input can be read, for functions that open it themselves: its name, or for "-" a file with the
// whole standard input.
std::string readablePath(const std::string& name);

// The names in a list, of which each ends in NUL: those that `find -print0` prints, and `tvmeta brackets --files0`.
std::vector<std::string> readNames(const std::string& list);

using Bytes = std::vector<unsigned char>;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file for reading. Only regular files are accepted: reading from a pipe or device might never end.
File openFile(const std::string& path);

// Reads a whole file. Files of 2 GiB and more are refused, because the library uses signed 32-bit sizes.
Bytes readFile(const std::string& path);

// Reads up to `length` bytes from the start of a file.
Bytes readStart(const std::string& path, size_t length);

// What an exception says, in the words of this tool.
std::string problemOf(const std::exception& problem);

// Throws Failure with the path and the system's reason.
[[noreturn]] void failWithErrno(const std::string& path);

// Converts a size to the library's signed 32-bit type. Throws Failure if it does not fit.
int32_t checkedSize(uint64_t size);

template <typename Container>
int32_t librarySize(const Container& content) {
    return checkedSize(std::size(content));
}

// The size of a text with its terminating zero.
inline int32_t textSize(const std::string& text) {
    return checkedSize(uint64_t{text.size()} + 1);
}

// The number in up to four bytes.
inline uint32_t bigEndian(std::span<const unsigned char> bytes) {
    uint32_t number = 0;
    for (const unsigned char byte : bytes) {
        number = number << 8 | byte;
    }
    return number;
}

inline std::span<const unsigned char> asBytes(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

inline std::string_view asText(std::span<const unsigned char> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Calls `take` with the rest of an open file, piece by piece.
void readPieces(std::FILE* file, const std::string& path, const std::function<void(std::string_view piece)>& take);

// Overwrites `copy` with the contents of a regular file.
void copyFile(const std::string& path, const std::string& copy);

// Throws Failure if the file does not take all bytes.
void writeBytes(std::FILE* file, std::string_view bytes, const std::string& path);
