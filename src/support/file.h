// Support: what every room may use. It knows nothing of images, metadata or settings.
//
// Owned standard streams.
#pragma once

#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

namespace tvmeta {

struct CloseFile {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};

// A stream that is closed on every way out of its scope.
using File = std::unique_ptr<std::FILE, CloseFile>;

// Opens a file without a buffer: a write reaches the system at once, so that a full disk fails the write that hit it,
// and a read fetches what is asked for and no more. An empty File means failure; a null path is one.
inline File openUnbuffered(const char* path, const char* mode) noexcept {
    File file(path != nullptr ? std::fopen(path, mode) : nullptr);
    if (file) {
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

// Closes a file that was written and tells whether the system took all of it.
inline bool closeWritten(File& file) noexcept {
    return std::fclose(file.release()) == 0;
}

inline bool seekTo(std::FILE* stream, std::int64_t position) noexcept {
    return position <= std::numeric_limits<long>::max() &&
           std::fseek(stream, static_cast<long>(position), SEEK_SET) == 0;
}

// The size of a file, leaving the stream at its end; -1 when it cannot be found.
inline std::int64_t measure(std::FILE* stream) noexcept {
    return std::fseek(stream, 0, SEEK_END) == 0 ? std::ftell(stream) : -1;
}

} // namespace tvmeta
