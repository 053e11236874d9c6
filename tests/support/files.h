// Files of a test: made in a directory of their own, gone with it.
#pragma once

#include "support/bytes.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace test {

class TempDir {
  public:
    TempDir() {
        std::string name = (std::filesystem::temp_directory_path() / "tvmeta-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = name;
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return (path_ / name).string(); }

    std::string write(const std::string& name, const Bytes& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

  private:
    std::filesystem::path path_;
};

inline Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

// A stream over bytes in memory.
inline Stream streamOf(Bytes& bytes) {
    return Stream(fmemopen(bytes.data(), bytes.size(), "rb"));
}

} // namespace test
