// Metadata: a stream as a sequence of bytes with a position.
#pragma once

#include "metadata/source_reader.h"
#include "support/file.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace tvmeta {

class StreamReader : public SourceReader {
  public:
    // The stream is at `position`, from which the reader starts. A negative one means that the position is unknown.
    StreamReader(std::FILE* stream, std::int64_t position, std::size_t windowSize)
        : SourceReader({this, INT64_MAX, readStream, nullptr}, position, windowSize), stream_(stream),
          streamPosition_(position) {}

    // The number of bytes from the position of the reader to the end of the stream.
    std::int64_t remaining() {
        streamPosition_ = fileSize(stream_);
        return std::max<std::int64_t>(streamPosition_ - position(), 0);
    }

  protected:
    bool moveStream(std::int64_t position) {
        if (streamPosition_ != position && !seekTo(stream_, position)) {
            return false;
        }
        streamPosition_ = position;
        return true;
    }

  private:
    static std::int64_t readStream(void* context, std::int64_t position, void* buffer, std::int64_t count) {
        auto& self = *static_cast<StreamReader*>(context);
        if (!self.moveStream(position)) {
            return -1;
        }
        const std::size_t read = std::fread(buffer, 1, static_cast<std::size_t>(count), self.stream_);
        self.streamPosition_ += static_cast<std::int64_t>(read);
        return static_cast<std::int64_t>(read);
    }

    std::FILE* stream_;
    std::int64_t streamPosition_; // known, so that reading on needs no seek
};

// A reader of a stream of the caller. It starts at the position of the stream, and leaves the stream at its own.
class BorrowedStreamReader : public StreamReader {
  public:
    explicit BorrowedStreamReader(std::FILE* stream) : StreamReader(stream, positionOf(stream), window_size::Tiff) {}
    ~BorrowedStreamReader() { moveStream(position()); }
};

} // namespace tvmeta
