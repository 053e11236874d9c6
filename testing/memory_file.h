// A file in memory that has a path, for loops that rewrite it thousands of times.
#pragma once

#include "testing/files.h"

#include <cstdint>
#include <span>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace test {

class MemoryFile {
  public:
#ifdef __linux__
    MemoryFile() : descriptor_(memfd_create("tvmeta", 0)), path_("/proc/self/fd/" + std::to_string(descriptor_)) {
        if (descriptor_ < 0) {
            throw std::runtime_error("cannot create a memory file");
        }
    }
    ~MemoryFile() {
        close(descriptor_);
    }
#else
    MemoryFile() : path_(dir_.path("file")) {}
    ~MemoryFile() = default;
#endif
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const char* path() const {
        return path_.c_str();
    }
    Stream open() const {
        return Stream(std::fopen(path(), "rb"));
    }

    // Replaces the contents.
    const MemoryFile& write(std::span<const std::uint8_t> bytes) const {
#ifdef __linux__
        if (ftruncate(descriptor_, 0) != 0 ||
            pwrite(descriptor_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("cannot write the memory file");
        }
#else
        writeFile(path_, Bytes(bytes.begin(), bytes.end()));
#endif
        return *this;
    }
    const MemoryFile& write(const Bytes& bytes) const {
        return write(std::span(raw(bytes), bytes.size()));
    }

  private:
#ifdef __linux__
    int descriptor_;
#else
    TempDir dir_;
#endif
    std::string path_;
};

} // namespace test
