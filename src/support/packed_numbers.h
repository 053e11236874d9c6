// Support: numbers in memory, byte by byte, at any alignment.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tvmeta {

// The sum of two offsets modulo 2^32. Offsets at the interface are signed 32-bit numbers, which wrap.
constexpr std::int32_t wrappingAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

// Copies `size` bytes. Unlike memcpy, it accepts null pointers if the size is 0.
inline void copyBytes(void* to, const void* from, std::size_t size) {
    if (size > 0) {
        std::memcpy(to, from, size);
    }
}

// Writes bytes and little-endian numbers into a block of fixed size. Excess bytes are dropped.
// Invariant: position_ <= block_.size().
class ByteWriter {
  public:
    explicit ByteWriter(std::span<unsigned char> block) : block_(block) {}

    void put16(std::uint16_t value) { putNumber(value, 2); }
    void put32(std::uint32_t value) { putNumber(value, 4); }

    // A number of 1 to 8 bytes.
    void putNumber(std::uint64_t value, std::size_t size) {
        unsigned char bytes[8] = {};
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<unsigned char>(value >> 8 * i);
        }
        put({bytes, size});
    }

    void put(std::span<const unsigned char> bytes) {
        const std::size_t size = fitting(bytes.size());
        copyBytes(block_.data() + position_, bytes.data(), size);
        position_ += size;
    }

    void putZeros(std::size_t count) {
        const std::size_t size = fitting(count);
        if (size > 0) {
            std::memset(block_.data() + position_, 0, size);
        }
        position_ += size;
    }

    // Leaves bytes unchanged.
    void skip(std::size_t count) { position_ += fitting(count); }

  private:
    std::size_t fitting(std::size_t size) const { return std::min(size, block_.size() - position_); }

    std::span<unsigned char> block_;
    std::size_t position_ = 0;
};

} // namespace tvmeta
