// What differs between operating systems. system_posix.cpp and system_windows.cpp implement it.
#pragma once

#include <compare>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

// Called once at the start: makes the standard streams usable, and what is written to them the same on every system.
void prepareProcess();

// The columns of the terminal that shows standard output; none if it goes to a file or another program.
std::optional<int> terminalWidth();

// True if standard error is a terminal that can erase a line.
bool canEraseLines();

// What distinguishes a file from all others of this computer, whatever its name.
struct FileIdentity {
    uint64_t volume = 0;
    uint64_t number = 0;

    auto operator<=>(const FileIdentity&) const = default;
};

// The identity of an existing file; none if it cannot be examined.
std::optional<FileIdentity> fileIdentity(const std::string& path);
std::optional<FileIdentity> fileIdentity(std::FILE* file);

bool isRegularFile(std::FILE* file);

// True if both paths name the same existing file.
inline bool isSameFile(const std::string& path, const std::string& other) {
    const std::optional<FileIdentity> identity = fileIdentity(path);
    return identity && identity == fileIdentity(other);
}

// Renames a file or folder. Fails with file_exists if the new name exists, and with cross_device_link if it is on
// another file system.
std::error_code moveTo(const std::string& path, const std::string& newPath);

// Locks a folder for this process until the result is destroyed or the process ends. If another process has it, calls
// `waiting`, then waits. Null if the folder cannot be locked.
std::shared_ptr<const void> lockFolder(const std::string& folder, const std::function<void()>& waiting);

// Reading from a device or a pipe might never end. A file that cannot be examined is Other.
enum class FileKind { Folder, Device, Other };
FileKind fileKind(const std::string& path);

// A name in a folder.
struct FolderEntry {
    enum class Kind { RegularFile, Subfolder, Other, Unknown }; // links to files are followed

    std::string name; // with the folder; without it if the name is not Unicode
    Kind kind = Kind::Unknown;
    std::string problem = {}; // why the kind is unknown
};

// What is in a folder, in no particular order. Throws Failure if it cannot be listed.
std::vector<FolderEntry> listFolder(const std::string& folder);

// The path by which functions of the system find a file. Long paths have a prefix on Windows.
std::string systemPath(const std::string& name);

// True for a symbolic link, or a junction, which Windows follows like one.
bool isLink(const std::string& path);
