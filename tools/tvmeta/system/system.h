// What differs between operating systems. system_posix.cpp and system_windows.cpp implement it.
#pragma once

#include <compare>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>

// Called once at the start: makes the standard streams usable, and what is written to them the same on every system.
void prepareProcess();

// Positions have 64 bits everywhere.
bool seekTo(std::FILE* file, int64_t position);
bool seekBy(std::FILE* file, int64_t distance);
int64_t positionOf(std::FILE* file);

// The columns of the terminal that shows standard output; none if it goes to a file or another program.
std::optional<int> terminalWidth();

// True if standard error is a terminal that can erase a line.
bool canEraseLines();

// True if both paths name the same existing file.
bool isSameFile(const std::string& path, const std::string& other);

// What identifies a file under all its names; none if it cannot be examined.
struct FileId {
    uint64_t device = 0;
    uint64_t number = 0;

    auto operator<=>(const FileId&) const = default;
};
std::optional<FileId> fileId(const std::string& path);

// Renames a file or folder. Fails with file_exists if the new name exists, and with cross_device_link if it is on
// another file system.
std::error_code moveTo(const std::string& path, const std::string& newPath);

// Reading from a device or a pipe might never end. A file that cannot be examined is Other.
enum class FileKind { Folder, Device, Other };
FileKind fileKind(const std::string& path);

// True if standard output goes to this file.
bool isStandardOutput(const std::string& path);

// True for a symbolic link, or a junction, which Windows follows like one.
bool isLink(const std::string& path);

// The columns of a character in a terminal; -1 if it is not printable.
int characterWidth(char32_t character);
