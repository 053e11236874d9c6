// Metadata: a file as a sequence of bytes with a position. All bytes of photographs are read through it.
#pragma once

#include "metadata/byte_order.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace tvmeta {

// How much of a file is read at once. A JPEG has its metadata in one place, a TIFF file in many.
namespace window_size {
inline constexpr std::size_t Jpeg = 16384;
inline constexpr std::size_t Tiff = 4096;
} // namespace window_size

// Reads a stream through a few windows, so that moving costs nothing until a byte outside of them is needed. There are
// several because a directory, its values and the next directory tend to be in different places, and reading returns
// to them. At its edges the reader behaves as a stream does:
//  - a position before the start is refused, and the reader does not move;
//  - a position after the end is accepted; there, as at the end, a read returns nothing and does not move.
// A read error ends the file where it occurs.
class StreamReader {
  public:
    // The stream is at `position`, from which the reader starts. A negative one means that the position is unknown; the
    // reader is then at the end of the file.
    StreamReader(std::FILE* stream, std::int64_t position, std::size_t windowSize);

    std::int64_t position() const { return position_; }

    // Moves to a position. Returns false if it is before the start.
    bool seek(std::int64_t position);
    bool skip(std::int64_t count) { return seek(position_ + count); }

    // One byte, or EOF.
    int get();
    std::uint16_t read16(ByteOrder order);
    std::int32_t read32(ByteOrder order);

    // Reads up to the size of the block, and returns the number of bytes.
    std::size_t read(std::span<unsigned char> block);

    // The number of bytes from the position to the end of the file. Moves the stream.
    std::int64_t remaining();

    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

  protected:
    // Moves the stream to the position of the reader.
    void synchronise();

  private:
    static constexpr std::size_t MaxWindowSize = window_size::Jpeg;
    static constexpr std::size_t ScatteredSize = 1024; // window size once a file has proved scattered
    static constexpr std::uint64_t MaxFills = 64;      // a photograph needs fewer
    static constexpr std::size_t Windows = 3;

    struct Window {
        std::int64_t start = 0;
        std::size_t size = 0;
        std::uint64_t lastUse = 0;
        std::array<unsigned char, MaxWindowSize> bytes;

        std::span<const unsigned char> from(std::int64_t position) const;
    };

    std::span<const unsigned char> available();
    template <std::size_t Size>
    std::array<int, Size> take();
    void use(Window& window);
    bool fill();
    std::size_t readStream(unsigned char* block, std::size_t size);

    std::FILE* stream_;
    std::int64_t position_;
    std::int64_t streamPosition_;
    std::int64_t end_; // of the file, once it is known
    std::size_t windowSize_;
    std::uint64_t uses_ = 0;
    std::uint64_t fills_ = 0;
    std::array<Window, Windows> windows_;
    Window* current_ = &windows_[0]; // the one that was used last
};

// A reader of a stream of the caller. It starts at the position of the stream, and leaves the stream at its own.
class LentStreamReader : public StreamReader {
  public:
    explicit LentStreamReader(std::FILE* stream);
    ~LentStreamReader() { synchronise(); }
    LentStreamReader(const LentStreamReader&) = delete;
    LentStreamReader& operator=(const LentStreamReader&) = delete;
};

} // namespace tvmeta
