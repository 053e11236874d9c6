// Metadata: the one door through which file bytes come in.
#pragma once

#include "metadata/byte_order.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace tvmeta {

// A stream seen through a few windows, with a logical position of its own.
//
// Moving costs nothing until a byte is wanted from outside the windows. There are several since a directory, its values
// and the next directory tend to lie in different places, to which reading comes back. What a stream does at its edges
// holds here too:
//  - a position before the start is refused, and the reader stays where it is;
//  - a position behind the end is taken; there, as at the end, a read yields nothing and does not move.
// A read error ends the file where it happens.
class StreamReader {
  public:
    // The stream stands at `position`, from which the reader starts; a negative one means that it cannot tell, and
    // reads as a file that has ended.
    StreamReader(std::FILE* stream, std::int64_t position) noexcept;

    std::int64_t position() const noexcept { return position_; }

    // Moves to a position; false if it lies before the start.
    bool seek(std::int64_t position) noexcept;
    bool skip(std::int64_t count) noexcept { return seek(position_ + count); }

    // One byte; EOF where there is none.
    int get() noexcept;
    std::uint16_t read16(ByteOrder order) noexcept;
    std::int32_t read32(ByteOrder order) noexcept;

    // As many bytes as there are, up to the size of the block; returns their number.
    std::size_t read(std::span<unsigned char> block) noexcept;

    // A line, newline included, of at most text.size() - 1 bytes, and its terminator. Without a byte to be read the
    // text stays as it is.
    void readLine(std::span<char> text) noexcept;

    // The bytes from here to the end of the file. Asks the system.
    std::int64_t remaining() noexcept;

    // Lets the reader take bytes that somebody else has read, from `position` of the file on, instead of reading them
    // again. They must stay where they are until an empty block takes their place.
    void lend(std::span<const unsigned char> bytes, std::int64_t position) noexcept;

  protected:
    // Puts the stream where the reader is.
    void leave() noexcept;

  private:
    static constexpr std::size_t WindowSize = 16384; // copied in the time that one more call of the system takes
    static constexpr std::size_t SmallSize = 1024;   // all that is read at once in a file that leads to many places
    static constexpr std::uint64_t LargeFills = 64;  // more than a photograph needs
    static constexpr std::size_t Windows = 3;

    // File bytes in memory.
    struct View {
        std::int64_t start = 0;
        std::span<const unsigned char> bytes;
        std::uint64_t lastUse = 0;

        std::span<const unsigned char> from(std::int64_t position) const noexcept;
    };

    std::span<const unsigned char> available() noexcept;
    template <std::size_t Size>
    std::array<int, Size> take() noexcept;
    void use(std::size_t view) noexcept;
    bool fill() noexcept;
    std::size_t readStream(unsigned char* block, std::size_t size) noexcept;

    std::FILE* stream_;
    std::int64_t position_;
    std::int64_t streamPosition_;         // where the stream stands
    std::int64_t end_;                    // end of the file, once it has been met
    std::array<View, Windows + 1> views_; // of the windows, and of what has been lent
    std::size_t current_ = 0;             // the view that was used last
    std::uint64_t uses_ = 0;
    std::uint64_t fills_ = 0;
    std::array<std::array<unsigned char, WindowSize>, Windows> windows_;
};

// A reader of a stream that a caller lends: starts where the stream stands and leaves it where the reader was.
class LentStreamReader : public StreamReader {
  public:
    explicit LentStreamReader(std::FILE* stream) noexcept;
    ~LentStreamReader() { leave(); }
    LentStreamReader(const LentStreamReader&) = delete;
    LentStreamReader& operator=(const LentStreamReader&) = delete;
};

} // namespace tvmeta
