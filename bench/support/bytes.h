// Pieces of files, and bytes to fill them with.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::string;
using Random = std::mt19937_64; // unseeded: every run has the same inputs

inline Bytes le16(std::uint32_t value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}
inline Bytes be16(std::uint32_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}
inline Bytes le32(std::uint32_t value) {
    return le16(value) + le16(value >> 16);
}
inline Bytes be32(std::uint32_t value) {
    return be16(value >> 16) + be16(value);
}

// A number of a little-endian file in memory.
inline std::uint32_t loadLe16(const Bytes& bytes, std::size_t offset) {
    return static_cast<unsigned char>(bytes.at(offset)) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(offset + 1))) << 8;
}
inline std::uint32_t loadLe32(const Bytes& bytes, std::size_t offset) {
    return loadLe16(bytes, offset) | loadLe16(bytes, offset + 2) << 16;
}

inline std::uint32_t sizeOf(const Bytes& bytes) {
    return static_cast<std::uint32_t>(bytes.size());
}

// Random bytes for large buffers: eight at a time, so `size` must be a multiple of 8.
inline std::vector<unsigned char> randomBuffer(std::size_t size, Random& random) {
    std::vector<unsigned char> buffer(size);
    for (std::size_t i = 0; i < size; i += 8) {
        const std::uint64_t word = random();
        std::memcpy(&buffer[i], &word, sizeof word);
    }
    return buffer;
}

} // namespace bench
