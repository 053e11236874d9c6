// Output files that replace others. temporary_file_posix.cpp and temporary_file_windows.cpp implement them.
#pragma once

#include "system/files.h"

#include <optional>
#include <string>

// The target of output.
struct OutputTarget {
    std::string name;                   // as the user wrote it
    std::string path;                   // with symbolic links followed
    bool exists = false;                // as a file that can be replaced
    bool isDirect = false;              // cannot be replaced: a device, a pipe or an open descriptor
    std::optional<int> descriptor = {}; // the descriptor of this process that the path names
};

// Throws Failure if the path names a folder or a file that must not be written.
OutputTarget resolveTarget(const std::string& name);

// Opens a target that is written directly, without truncating it.
File openDirect(const OutputTarget& target);

// A file in the system's temporary folder that ends with its scope: for data that must be read or written by path.
class SpoolFile {
  public:
    SpoolFile();
    ~SpoolFile();
    SpoolFile(const SpoolFile&) = delete;
    SpoolFile& operator=(const SpoolFile&) = delete;

    const std::string& path() const { return openingPath; }
    std::FILE* stream() const { return file.get(); }

  private:
    File file;
    std::string openingPath;
};

// Called once at the start: a signal, or Ctrl+C in a console, removes the temporary file and ends the process.
void removeTemporaryFileOnSignals();

// A new file in the folder of a target. It is removed at the end of its scope, or when a signal ends the process,
// unless it has replaced the target. Only one can exist at a time.
class TemporaryFile {
  public:
    explicit TemporaryFile(const OutputTarget& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return temporaryPath; }
    std::FILE* stream() const { return file.get(); }

    // Synchronises the file with the disk and renames it. It gets the permissions and attributes of the file that it
    // replaces, and on POSIX systems its owner, group and extended attributes, as far as the system allows.
    void replace(const OutputTarget& target);

  private:
    std::string temporaryPath;
    File file;
    unsigned newFileMode = 0; // the permissions that a POSIX system gives a new file
};
