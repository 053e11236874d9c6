// Support: what every room may use. It knows nothing of images, metadata or settings.
//
// Files with 64-bit positions on every platform. Nothing else in the library opens a file, moves in it or measures it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace tvmeta {

struct CloseFile {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

// Closes the stream at the end of its scope.
using File = std::unique_ptr<std::FILE, CloseFile>;

enum class Access { Read, Write, Update }; // Write empties the file

// Opens a file without a buffer: a write reaches the system at once, so a full disk fails the write that hit it, and a
// read fetches no more than it returns. Programs that the process starts do not inherit the file where the C library
// can arrange that. The path is UTF-8 on Windows. Returns an empty File on failure, a null path included.
File openUnbuffered(const char* path, Access access);

#ifdef _WIN32
// The same for reading at any position by several threads. Returns a HANDLE, INVALID_HANDLE_VALUE on failure.
void* openHandle(const char* path);
#endif

// Closes a file that was written. Returns false if the system could not store all of it.
bool closeWritten(File& file);

bool seekTo(std::FILE* stream, std::int64_t position);

// The position of the stream; -1 if it cannot be found.
std::int64_t positionOf(std::FILE* stream);

// The size of a file; -1 if it cannot be found. Leaves the stream at the end.
std::int64_t fileSize(std::FILE* stream);

// True for a directory: POSIX opens one for reading, and fails every read. Moves the stream.
bool isDirectory(std::FILE* stream);

// Prints the text, the path if there is one, and a line feed to the standard error stream: also on Windows, where the
// stream makes two bytes of it.
void printMessage(const char* text, const char* path = "");

} // namespace tvmeta
