#include "pictures/convert.h"

#include "pictures/half.h"

#include <cmath>
#include <cstring>

// 0xFF becomes 0xFFFF, so that white stays white: both bytes are the 8-bit sample.
void widenTo16Bits(Picture& picture) {
    const size_t count = picture.samples.size();
    picture.samples.resize(2 * count);
    unsigned char* const bytes = picture.samples.data();
    for (size_t i = count; i-- > 0;) {
        const unsigned char sample = bytes[i];
        bytes[2 * i] = sample;
        bytes[2 * i + 1] = sample;
    }
    picture.depth = Depth::Integer16;
}

uint64_t convertToHalf(Picture& picture) {
    uint64_t limited = 0;
    const size_t count = picture.samples.size() / sizeof(float);
    unsigned char* const bytes = picture.samples.data();
    for (size_t i = 0; i < count; ++i) {
        float sample;
        std::memcpy(&sample, bytes + i * sizeof sample, sizeof sample);
        limited += std::fabs(sample) > LargestHalf ? 1 : 0;
        const uint16_t half = halfFromFloat(sample);
        std::memcpy(bytes + i * sizeof half, &half, sizeof half);
    }
    picture.samples.resize(count * sizeof(uint16_t));
    picture.depth = Depth::Float16;
    return limited;
}

void convertFromHalf(Picture& picture) {
    const size_t count = picture.samples.size() / sizeof(uint16_t);
    picture.samples.resize(count * sizeof(float));
    unsigned char* const bytes = picture.samples.data();
    for (size_t i = count; i-- > 0;) {
        uint16_t half;
        std::memcpy(&half, bytes + i * sizeof half, sizeof half);
        const float sample = floatFromHalf(half);
        std::memcpy(bytes + i * sizeof sample, &sample, sizeof sample);
    }
    picture.depth = Depth::Float32;
}
