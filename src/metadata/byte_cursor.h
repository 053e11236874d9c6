// Metadata: a cursor over bytes in memory. Reading beyond the end gives 0 and is remembered, so that a sequence of
// numbers needs one check at its end.
#pragma once

#include "metadata/byte_order.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

// Invariant: position_ <= bytes_.size().
class ByteCursor {
  public:
    explicit ByteCursor(std::span<const unsigned char> bytes, ByteOrder order = ByteOrder::Big)
        : bytes_(bytes), order_(order) {}

    // False after a read or a skip beyond the end.
    explicit operator bool() const { return complete_; }

    std::size_t position() const { return position_; }
    std::size_t remaining() const { return bytes_.size() - position_; }

    std::uint8_t get8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t get16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t get32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t get64() { return number(8); }

    // An unsigned number of 0 to 8 bytes.
    std::uint64_t number(std::size_t size) {
        std::uint64_t value = 0;
        const std::span<const unsigned char> bytes = take(size);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const std::size_t place = order_ == ByteOrder::Big ? bytes.size() - 1 - i : i;
            value |= std::uint64_t{bytes[i]} << 8 * place;
        }
        return value;
    }

    // The next bytes; empty if there are fewer.
    std::span<const unsigned char> take(std::size_t size) {
        if (size > remaining()) {
            complete_ = false;
            return {};
        }
        position_ += size;
        return bytes_.subspan(position_ - size, size);
    }

    void skip(std::size_t size) { take(size); }

  private:
    std::span<const unsigned char> bytes_;
    ByteOrder order_;
    std::size_t position_ = 0;
    bool complete_ = true;
};

} // namespace tvmeta
