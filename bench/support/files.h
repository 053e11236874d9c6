// Files of the bench: in a directory of their own, gone with it.
#pragma once

#include "support/bytes.h"
#include "support/jobs.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace bench {

class TempDir {
  public:
    explicit TempDir(const std::filesystem::path& parent) {
        std::string name = (parent / "tvmeta-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw Failure("no directory can be made in " + parent.string());
        }
        path_ = name;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const char* name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

inline void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) {
        throw Failure(path + " cannot be written");
    }
}

inline Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) {
        throw Failure(path + " cannot be read");
    }
    Bytes bytes(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

} // namespace bench
