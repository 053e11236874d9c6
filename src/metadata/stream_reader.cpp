#include "metadata/stream_reader.h"

#include "support/bytes.h"
#include "support/file.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

StreamReader::StreamReader(std::FILE* stream, std::int64_t position) noexcept
    : stream_(stream), position_(position), streamPosition_(position), end_(position < 0 ? INT64_MIN : INT64_MAX) {}

bool StreamReader::seek(std::int64_t position) noexcept {
    if (position < 0) {
        return false;
    }
    position_ = position;
    return true;
}

std::span<const unsigned char> StreamReader::View::from(std::int64_t position) const noexcept {
    const std::int64_t offset = position - start;
    if (offset < 0 || static_cast<std::uint64_t>(offset) >= bytes.size()) {
        return {};
    }
    return bytes.subspan(static_cast<std::size_t>(offset));
}

// The bytes at the position that are in memory.
std::span<const unsigned char> StreamReader::available() noexcept {
    if (const auto bytes = views_[current_].from(position_); !bytes.empty()) {
        return bytes;
    }
    for (std::size_t i = 0; i < views_.size(); ++i) {
        if (const auto bytes = views_[i].from(position_); !bytes.empty()) {
            use(i);
            return bytes;
        }
    }
    return {};
}

// Reads from the position on, without moving it, and learns where the file ends.
std::size_t StreamReader::readStream(unsigned char* block, std::size_t size) noexcept {
    if (position_ >= end_) {
        return 0;
    }
    if (streamPosition_ != position_ && !seekTo(stream_, position_)) {
        return 0;
    }
    const std::size_t count = std::fread(block, 1, size, stream_);
    streamPosition_ = position_ + static_cast<std::int64_t>(count);
    if (count < size) {
        end_ = streamPosition_;
    }
    return count;
}

void StreamReader::use(std::size_t view) noexcept {
    current_ = view;
    views_[view].lastUse = ++uses_;
}

// Reads a window at the position, in place of the one that has not been used for longest.
bool StreamReader::fill() noexcept {
    if (position_ >= end_) {
        return false;
    }
    const auto oldest = std::ranges::min_element(views_.begin(), views_.begin() + Windows, {}, &View::lastUse);
    const auto index = static_cast<std::size_t>(oldest - views_.begin());
    const std::size_t size = readStream(windows_[index].data(), ++fills_ <= LargeFills ? WindowSize : SmallSize);
    *oldest = {position_, std::span(windows_[index]).first(size), 0};
    use(index);
    return size > 0;
}

void StreamReader::lend(std::span<const unsigned char> bytes, std::int64_t position) noexcept {
    views_.back() = {position, bytes, 0};
}

int StreamReader::get() noexcept {
    std::span<const unsigned char> bytes = available();
    if (bytes.empty()) {
        if (!fill()) {
            return EOF;
        }
        bytes = available();
    }
    ++position_;
    return bytes.front();
}

// The next bytes of a number, missing ones as EOF.
template <std::size_t Size>
std::array<int, Size> StreamReader::take() noexcept {
    std::array<int, Size> number;
    const std::span<const unsigned char> bytes = available();
    if (bytes.size() >= Size) { // mostly
        std::ranges::copy(bytes.first<Size>(), number.begin());
        position_ += Size;
    } else {
        std::ranges::generate(number, [this] { return get(); });
    }
    return number;
}

std::uint16_t StreamReader::read16(ByteOrder order) noexcept {
    const auto [b0, b1] = take<2>();
    return combine16(order, b0, b1);
}

std::int32_t StreamReader::read32(ByteOrder order) noexcept {
    const auto [b0, b1, b2, b3] = take<4>();
    return combine32(order, b0, b1, b2, b3);
}

std::size_t StreamReader::read(std::span<unsigned char> block) noexcept {
    std::size_t done = 0;
    while (done < block.size()) {
        const std::span<unsigned char> rest = block.subspan(done);
        const std::span<const unsigned char> bytes = available();
        std::size_t count = std::min(bytes.size(), rest.size());
        copyBytes(rest.data(), bytes.data(), count);
        if (count == 0 && rest.size() >= WindowSize) {
            count = readStream(rest.data(), rest.size());
        }
        position_ += static_cast<std::int64_t>(count);
        done += count;
        if (count == 0 && !fill()) {
            break;
        }
    }
    return done;
}

void StreamReader::readLine(std::span<char> text) noexcept {
    std::size_t size = 0;
    while (size + 1 < text.size()) {
        const int byte = get();
        if (byte == EOF) {
            break;
        }
        text[size++] = static_cast<char>(byte);
        if (byte == '\n') {
            break;
        }
    }
    if (size > 0) {
        text[size] = '\0';
    }
}

std::int64_t StreamReader::remaining() noexcept {
    const std::int64_t size = fileSize(stream_);
    streamPosition_ = size;
    return std::max<std::int64_t>(size - position_, 0);
}

void StreamReader::leave() noexcept {
    if (streamPosition_ != position_) {
        seekTo(stream_, position_);
    }
}

// A stream that cannot tell its position cannot be read by offsets: it counts as one that has ended.
LentStreamReader::LentStreamReader(std::FILE* stream) noexcept : StreamReader(stream, positionOf(stream)) {}

} // namespace tvmeta
