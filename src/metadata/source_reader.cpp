#include "metadata/source_reader.h"

#include "support/packed_numbers.h"

#include <algorithm>

namespace tvmeta {

SourceReader::SourceReader(const tvmeta_Source& source, std::int64_t position, std::size_t windowSize)
    : source_(source), position_(position), end_(position < 0 ? INT64_MIN : source.size),
      windowSize_(std::min(windowSize, MaxWindowSize)) {}

bool SourceReader::seek(std::int64_t position) {
    if (position < 0) {
        return false;
    }
    position_ = position;
    return true;
}

std::span<const unsigned char> SourceReader::Window::from(std::int64_t position) const {
    const std::int64_t offset = position - start;
    if (offset < 0 || static_cast<std::uint64_t>(offset) >= size) {
        return {};
    }
    return std::span(bytes).first(size).subspan(static_cast<std::size_t>(offset));
}

// The bytes in memory from the position on.
std::span<const unsigned char> SourceReader::available() {
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

// Reads from the position on without moving it. Bytes beyond the end are never asked for. A short read marks the end; a
// source that returns more bytes than it was asked for is broken.
std::size_t SourceReader::readSource(unsigned char* block, std::size_t size) {
    if (position_ >= end_) {
        return 0;
    }
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(size), end_ - position_);
    const std::int64_t count = source_.read(source_.context, position_, block, wanted);
    if (count < 0 || count > wanted) {
        failed_ = true;
        return 0;
    }
    if (count < wanted) {
        end_ = position_ + count;
    }
    return static_cast<std::size_t>(count);
}

void SourceReader::use(Window& window) {
    current_ = &window;
    window.lastUse = ++uses_;
}

// Reads a window at the position, in place of the one that was used longest ago. Returns its bytes.
std::span<const unsigned char> SourceReader::fill() {
    if (position_ >= end_) {
        return {};
    }
    Window& window = *std::ranges::min_element(windows_, {}, &Window::lastUse);
    window.size = readSource(window.bytes.data(), ++fills_ <= MaxFills ? windowSize_ : ScatteredSize);
    window.start = position_;
    use(window);
    return window.from(position_);
}

int SourceReader::get() {
    std::span<const unsigned char> bytes = available();
    if (bytes.empty()) {
        bytes = fill();
    }
    if (bytes.empty()) {
        return EOF;
    }
    ++position_;
    return bytes.front();
}

// The next bytes of a number, missing ones as EOF.
template <std::size_t Size>
std::array<int, Size> SourceReader::take() {
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

std::uint16_t SourceReader::read16(ByteOrder order) {
    const auto [b0, b1] = take<2>();
    return combine16(order, b0, b1);
}

std::int32_t SourceReader::read32(ByteOrder order) {
    const auto [b0, b1, b2, b3] = take<4>();
    return combine32(order, b0, b1, b2, b3);
}

std::size_t SourceReader::read(std::span<unsigned char> block) {
    std::size_t done = 0;
    while (done < block.size()) {
        const std::span<unsigned char> rest = block.subspan(done);
        const std::span<const unsigned char> bytes = available();
        std::size_t count = std::min(bytes.size(), rest.size());
        copyBytes(rest.data(), bytes.data(), count);
        if (count == 0 && rest.size() >= windowSize_) {
            count = readSource(rest.data(), rest.size());
        }
        position_ += static_cast<std::int64_t>(count);
        done += count;
        if (count == 0 && fill().empty()) {
            break;
        }
    }
    return done;
}

} // namespace tvmeta
