#include "metadata/stream_reader.h"

#include "support/bytes.h"
#include "support/file.h"

#include <algorithm>
#include <cstdint>

namespace tvmeta {

StreamReader::StreamReader(std::FILE* stream, std::int64_t position, std::size_t windowSize)
    : stream_(stream), position_(position), streamPosition_(position), end_(position < 0 ? INT64_MIN : INT64_MAX),
      windowSize_(std::min(windowSize, MaxWindowSize)) {}

bool StreamReader::seek(std::int64_t position) {
    if (position < 0) {
        return false;
    }
    position_ = position;
    return true;
}

std::span<const unsigned char> StreamReader::Window::from(std::int64_t position) const {
    const std::int64_t offset = position - start;
    if (offset < 0 || static_cast<std::uint64_t>(offset) >= size) {
        return {};
    }
    return std::span(bytes).first(size).subspan(static_cast<std::size_t>(offset));
}

// The bytes in memory from the position on.
std::span<const unsigned char> StreamReader::available() {
    if (const auto bytes = current_->from(position_); !bytes.empty()) {
        return bytes;
    }
    for (Window& window : windows_) {
        if (const auto bytes = window.from(position_); !bytes.empty()) {
            use(window);
            return bytes;
        }
    }
    return {};
}

// Reads from the position on without moving it. A short read marks the end of the file.
std::size_t StreamReader::readStream(unsigned char* block, std::size_t size) {
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

void StreamReader::use(Window& window) {
    current_ = &window;
    window.lastUse = ++uses_;
}

// Reads a window at the position, in place of the one that was used longest ago.
bool StreamReader::fill() {
    if (position_ >= end_) {
        return false;
    }
    Window& window = *std::ranges::min_element(windows_, {}, &Window::lastUse);
    window.size = readStream(window.bytes.data(), ++fills_ <= MaxFills ? windowSize_ : ScatteredSize);
    window.start = position_;
    use(window);
    return window.size > 0;
}

int StreamReader::get() {
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
std::array<int, Size> StreamReader::take() {
    std::array<int, Size> number;
    const std::span<const unsigned char> bytes = available();
    if (bytes.size() >= Size) {
        std::ranges::copy(bytes.first<Size>(), number.begin());
        position_ += Size;
    } else {
        std::ranges::generate(number, [this] { return get(); });
    }
    return number;
}

std::uint16_t StreamReader::read16(ByteOrder order) {
    const auto [b0, b1] = take<2>();
    return combine16(order, b0, b1);
}

std::int32_t StreamReader::read32(ByteOrder order) {
    const auto [b0, b1, b2, b3] = take<4>();
    return combine32(order, b0, b1, b2, b3);
}

std::size_t StreamReader::read(std::span<unsigned char> block) {
    std::size_t done = 0;
    while (done < block.size()) {
        const std::span<unsigned char> rest = block.subspan(done);
        const std::span<const unsigned char> bytes = available();
        std::size_t count = std::min(bytes.size(), rest.size());
        copyBytes(rest.data(), bytes.data(), count);
        if (count == 0 && rest.size() >= windowSize_) {
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

std::int64_t StreamReader::remaining() {
    const std::int64_t size = fileSize(stream_);
    streamPosition_ = size;
    return std::max<std::int64_t>(size - position_, 0);
}

void StreamReader::synchronise() {
    if (streamPosition_ != position_) {
        seekTo(stream_, position_);
    }
}

LentStreamReader::LentStreamReader(std::FILE* stream) : StreamReader(stream, positionOf(stream), window_size::Tiff) {}

} // namespace tvmeta
