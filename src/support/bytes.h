// Support: numbers in memory, one byte at a time, whatever the machine's byte order and alignment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tvmeta {

constexpr std::uint16_t loadBe16(const unsigned char* bytes) noexcept {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

constexpr void storeLe16(unsigned char* bytes, std::uint16_t value) noexcept {
    bytes[0] = static_cast<unsigned char>(value);
    bytes[1] = static_cast<unsigned char>(value >> 8);
}

constexpr void storeLe32(unsigned char* bytes, std::uint32_t value) noexcept {
    storeLe16(bytes, static_cast<std::uint16_t>(value));
    storeLe16(bytes + 2, static_cast<std::uint16_t>(value >> 16));
}

// Sum of two offsets modulo 2^32: offsets at the interface are signed 32-bit numbers that wrap.
constexpr std::int32_t wrappingAdd(std::int32_t a, std::int32_t b) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

// Copies bytes that may be none, for which the pointers may be null.
inline void copyBytes(void* to, const void* from, std::size_t size) noexcept {
    if (size > 0) {
        std::memcpy(to, from, size);
    }
}

// Writes bytes one after the other into a block of fixed size.
// Invariant: position_ <= block_.size(). What does not fit is dropped, never written.
class ByteWriter {
  public:
    explicit ByteWriter(std::span<unsigned char> block) noexcept : block_(block) {}

    void put16(std::uint16_t value) noexcept {
        unsigned char bytes[2] = {};
        storeLe16(bytes, value);
        put(bytes);
    }

    void put32(std::uint32_t value) noexcept {
        unsigned char bytes[4] = {};
        storeLe32(bytes, value);
        put(bytes);
    }

    void put(std::span<const unsigned char> bytes) noexcept {
        const std::size_t size = fitting(bytes.size());
        copyBytes(block_.data() + position_, bytes.data(), size);
        position_ += size;
    }

    void putZeros(std::size_t count) noexcept {
        const std::size_t size = fitting(count);
        if (size > 0) {
            std::memset(block_.data() + position_, 0, size);
        }
        position_ += size;
    }

    // Passes over bytes that stay as they are.
    void skip(std::size_t count) noexcept { position_ += fitting(count); }

  private:
    std::size_t fitting(std::size_t size) const noexcept {
        return size <= block_.size() - position_ ? size : block_.size() - position_;
    }

    std::span<unsigned char> block_;
    std::size_t position_ = 0;
};

} // namespace tvmeta
