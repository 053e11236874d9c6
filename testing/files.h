// Temporary files for tests, fuzzers and benchmarks, deleted by the destructor.
#pragma once

#include "testing/bytes.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>

namespace test {

inline Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    Bytes bytes(file ? static_cast<std::size_t>(file.tellg()) : 0, '\0');
    if (!file.seekg(0).read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
        throw std::runtime_error(path + ": cannot read the file");
    }
    return bytes;
}

inline void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
        throw std::runtime_error(path + ": cannot write the file");
    }
}

class TempDir {
  public:
    explicit TempDir(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::random_device random;
        do {
            path_ = parent / ("tvmeta-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path_)); // false if the name exists; throws on other errors
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return (path_ / name).string(); }

    std::string write(const std::string& name, const Bytes& bytes) const {
        writeFile(path(name), bytes);
        return path(name);
    }

  private:
    std::filesystem::path path_;
};

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

// A stream that reads the bytes; they must outlive it.
inline Stream streamOf(Bytes& bytes) {
#ifdef _WIN32 // no fmemopen: a file that is deleted on close
    static const TempDir dir;
    static int count = 0;
    Stream stream(std::fopen(dir.path("stream" + std::to_string(count++)).c_str(), "w+bD"));
    std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
    std::rewind(stream.get());
    return stream;
#else
    return Stream(fmemopen(bytes.data(), bytes.size(), "rb"));
#endif
}

} // namespace test
