// Metadata: numbers from bytes. A byte is the result of a single-byte read: 0 to 255, or -1 at the end of the file.
// Decoding does not fail; the functions state what a missing byte counts as.
#pragma once

#include "support/tiff_vocabulary.h"

#include <cstdint>

namespace tvmeta {

enum class ByteOrder { Little, Big };

// The byte order of a TIFF structure from the low 16 bits of its mark.
constexpr ByteOrder byteOrderOf(std::int32_t mark) {
    return (mark & 0xFFFF) == LittleEndianMark ? ByteOrder::Little : ByteOrder::Big;
}

// A missing byte counts as 0xFF.
constexpr std::uint16_t combine16(ByteOrder order, int first, int second) {
    const int high = order == ByteOrder::Little ? second : first;
    const int low = order == ByteOrder::Little ? first : second;
    return static_cast<std::uint16_t>((high & 0xFF) << 8 | (low & 0xFF));
}

// A missing byte counts as -1 times its weight. Four of them give 0xFEFEFEFF.
constexpr std::int32_t combine32(ByteOrder order, int b0, int b1, int b2, int b3) {
    const auto weigh = [](int byte, int shift) { return static_cast<std::uint32_t>(byte) << shift; };
    const std::uint32_t sum = order == ByteOrder::Little ? weigh(b0, 0) + weigh(b1, 8) + weigh(b2, 16) + weigh(b3, 24)
                                                         : weigh(b0, 24) + weigh(b1, 16) + weigh(b2, 8) + weigh(b3, 0);
    return static_cast<std::int32_t>(sum);
}

} // namespace tvmeta
