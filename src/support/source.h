// Support: bytes that can be read at any position, whatever they come from.
#pragma once

#include "tvmeta_photo.h"

#include <cstdint>
#include <cstdio>

namespace tvmeta {

// `read` returns the number of bytes, fewer than `count` only at the end, or a negative number for an error. `size`
// returns the number of bytes in all, or a negative number for an error.
struct Source {
    void* context;
    std::int64_t (*read)(void* context, std::int64_t position, void* buffer, std::int64_t count);
    std::int64_t (*size)(void* context);
};

// The caller's source, which must outlive the result.
Source sourceOf(const tvmeta_Source& source);

// A stream as a source. Remembers the position of the stream, so that reading on needs no seek.
class StreamSource {
  public:
    StreamSource(std::FILE* stream, std::int64_t position) : stream_(stream), position_(position) {}
    StreamSource(const StreamSource&) = delete;
    StreamSource& operator=(const StreamSource&) = delete;

    Source source();

    // Moves the stream. Returns false if it cannot.
    bool moveTo(std::int64_t position);

  private:
    static std::int64_t readStream(void* context, std::int64_t position, void* buffer, std::int64_t count);
    static std::int64_t streamSize(void* context);

    std::FILE* stream_;
    std::int64_t position_;
};

} // namespace tvmeta
