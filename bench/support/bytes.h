// Parts of files, and bytes to fill them.
#pragma once

#include "testing/bytes.h"

#include <cstring>
#include <random>

namespace bench {

using namespace test;

using Random = std::mt19937_64; // default seed: every run has the same inputs

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
