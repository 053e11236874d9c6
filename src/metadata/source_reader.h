// Metadata: a source as a sequence of bytes with a position. All bytes of photographs are read through it.
#pragma once

#include "metadata/byte_order.h"
#include "tvmeta_photo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace tvmeta {

// How much of a source is read at once. A JPEG has its metadata in one place, a TIFF file in many.
namespace window_size {
inline constexpr std::size_t Jpeg = 16384;
inline constexpr std::size_t Tiff = 4096;
} // namespace window_size

// Reads a source through a few windows, so that moving costs nothing until a byte outside of them is needed. There are
// several because a directory, its values and the next directory tend to be in different places, and reading returns
// to them. At its edges the reader behaves as a stream does:
//  - a position before the start is refused, and the reader does not move;
//  - a position after the end is accepted; there, as at the end, a read returns nothing and does not move.
// A read error ends the source where it occurs.
class SourceReader {
  public:
    // The reader starts at `position`. A negative one means that the position is unknown; the reader is then at the
    // end.
    SourceReader(const tvmeta_Source& source, std::int64_t position, std::size_t windowSize);

    std::int64_t position() const { return position_; }

    // Whether the source has reported an error.
    bool failed() const { return failed_; }

    // The size of the windows from now on.
    void setWindowSize(std::size_t size) { windowSize_ = size < MaxWindowSize ? size : MaxWindowSize; }

    // Moves to a position. Returns false if it is before the start.
    bool seek(std::int64_t position);
    bool skip(std::int64_t count) { return seek(position_ + count); }

    // One byte, or EOF.
    int get();
    std::uint16_t read16(ByteOrder order);
    std::int32_t read32(ByteOrder order);

    // Reads up to the size of the block, and returns the number of bytes.
    std::size_t read(std::span<unsigned char> block);

    SourceReader(const SourceReader&) = delete;
    SourceReader& operator=(const SourceReader&) = delete;

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
    std::span<const unsigned char> fill();
    std::size_t readSource(unsigned char* block, std::size_t size);

    tvmeta_Source source_;
    std::int64_t position_;
    std::int64_t end_; // of the source: what it says of itself, or where it ended before that
    bool failed_ = false;
    std::size_t windowSize_;
    std::uint64_t uses_ = 0;
    std::uint64_t fills_ = 0;
    std::array<Window, Windows> windows_;
    Window* current_ = &windows_[0]; // the one that was used last
};

} // namespace tvmeta
