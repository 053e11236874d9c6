// Metadata: a stream as a sequence of bytes with a position.
#pragma once

#include "metadata/source_reader.h"
#include "support/file.h"

#include <cstdint>
#include <cstdio>

namespace tvmeta {

// The source comes first, because the reader is built on it.
class StreamReader : private StreamSource, public SourceReader {
  public:
    // The stream is at `position`, from which the reader starts. A negative one means that the position is unknown.
    StreamReader(std::FILE* stream, std::int64_t position, std::size_t windowSize)
        : StreamSource(stream, position), SourceReader(source(), position, windowSize) {}

  protected:
    // Moves the stream to the position of the reader.
    void synchronise() { moveTo(position()); }
};

// A reader of a stream of the caller. It starts at the position of the stream, and leaves the stream at its own.
class BorrowedStreamReader : public StreamReader {
  public:
    explicit BorrowedStreamReader(std::FILE* stream) : StreamReader(stream, positionOf(stream), window_size::Tiff) {}
    ~BorrowedStreamReader() { synchronise(); }
    BorrowedStreamReader(const BorrowedStreamReader&) = delete;
    BorrowedStreamReader& operator=(const BorrowedStreamReader&) = delete;
};

} // namespace tvmeta
