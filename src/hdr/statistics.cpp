// `addPixels` is the definition: value after value in row order, added in double precision. `addBlock` gives the same
// bits for up to 512 pixels at once.
#include "hdr/statistics.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace tvmeta::hdr {

namespace {

constexpr int MaxLuminance = (1 << LuminanceBits) - 1;
constexpr double MaxBlockSum = 1 << (LuminanceBits + BlockBits); // of luminances

// 2^(exponent - 128).
constexpr std::array<float, 256> Scale = [] {
    std::array<float, 256> scale{};
    double power = 0x1p-128;
    for (float& value : scale) {
        value = static_cast<float>(power);
        power *= 2.0;
    }
    return scale;
}();

// The value of a pixel; infinite if too large for single precision.
constexpr float valueOf(int luminance, unsigned exponent) {
    return static_cast<float>(luminance) * Scale[exponent];
}

// The value of the last bit that is set in a number above 0.
constexpr double lastBit(double number) {
    constexpr auto Fraction = (std::uint64_t{1} << (std::numeric_limits<double>::digits - 1)) - 1;
    const auto bits = std::bit_cast<std::uint64_t>(number);
    return (bits & Fraction) != 0 ? number - std::bit_cast<double>(bits & (bits - 1)) : number;
}

// The largest luminance * sign, modulo 256, among the pixels of one exponent; 0 without any. Two loops with a mask,
// since compilers do not vectorize a reduction of choices.
int largest(const Pixels& block, const unsigned char* luminance, unsigned exponent, int sign) {
    const auto wanted = static_cast<unsigned char>(exponent);
    unsigned char keys[MaxBlock];
    for (std::size_t i = 0; i < block.size; ++i) {
        const auto mask = static_cast<unsigned char>(block.exponent[i] == wanted ? 0xFF : 0);
        keys[i] = static_cast<unsigned char>(luminance[i] * sign) & mask;
    }
    unsigned char result = 0;
    for (std::size_t i = 0; i < block.size; ++i) {
        result = std::max(result, keys[i]);
    }
    return result;
}

// The processor's own prefetching fails on four streams that jump from row to row.
void prefetch(const unsigned char* pixels, std::size_t width, std::size_t size) {
    constexpr std::size_t CacheLine = 64;
    for (std::size_t plane = 0; plane < Planes; ++plane) {
        for (std::size_t i = 0; i < size; i += CacheLine) {
            TVMETA_PREFETCH(pixels + plane * width + i);
        }
    }
}

} // namespace

void Statistics::addPixels(const Pixels& pixels) {
    for (std::size_t i = 0; i < pixels.size; ++i) {
        if (pixels.exponent[i] == 0) {
            continue;
        }
        const float value = valueOf(luminance(pixels.blue[i], pixels.green[i], pixels.red[i]), pixels.exponent[i]);
        if (value > 0.0F && value < minimum_) {
            minimum_ = value;
        }
        maximum_ = std::max(maximum_, value);
        sum_ += static_cast<double>(value);
        ++count_;
    }
}

void Statistics::addBlock(const Pixels& block) {
    const ExponentRange range = kernels_.exponentRange(block);
    if (range.highest == 0) {
        return;
    }
    unsigned char luminance[MaxBlock];
    kernels_.luminances(block, luminance);
    updateExtremes(block, luminance, range);
    count_ += range.count;
    if (isExact(range)) {
        sum_ += static_cast<double>(kernels_.sum(block, luminance, range)) * Scale[range.lowest];
        return;
    }
    double sum = sum_;
    for (std::size_t i = 0; i < block.size; ++i) {
        sum += static_cast<double>(valueOf(luminance[i], block.exponent[i])); // + 0 if the pixel does not count
    }
    sum_ = sum;
}

// Whether the values of a block may be added in any order.
//
// Let the sum so far and all values of the block be multiples of a unit, a power of two. Then every partial sum is one,
// too, and none is larger than the sum after the block. If that is at most 2^53 units, every partial sum fits the
// mantissa of a double: no addition rounds, whatever the order.
bool Statistics::isExact(const ExponentRange& range) const {
    constexpr double MaxUnits = 0x1p53;
    if (range.highest - range.lowest > MaxSpan || std::isinf(valueOf(MaxLuminance, range.highest))) {
        return false;
    }
    const double blockUnit = Scale[range.lowest];
    const double unit = sum_ > 0.0 ? std::min(blockUnit, lastBit(sum_)) : blockUnit;
    return sum_ + MaxBlockSum * Scale[range.highest] <= MaxUnits * unit;
}

// Searches only the exponents that can give a new maximum or minimum: after the first blocks, there are few. The
// smallest luminance above 0 is, modulo 256, the largest negative one.
void Statistics::updateExtremes(const Pixels& block, const unsigned char* luminance, const ExponentRange& range) {
    for (unsigned e = range.highest; e >= range.lowest && valueOf(MaxLuminance, e) > maximum_; --e) {
        maximum_ = std::max(maximum_, valueOf(largest(block, luminance, e, 1), e));
    }
    for (unsigned e = range.lowest; e <= range.highest && valueOf(1, e) < minimum_; ++e) {
        if (const int negative = largest(block, luminance, e, -1); negative != 0) {
            minimum_ = std::min(minimum_, valueOf(MaxLuminance + 1 - negative, e));
        }
    }
}

void Statistics::addRow(const unsigned char* row, std::size_t width, const unsigned char* next) {
    const auto pixelsAt = [row, width](std::size_t x, std::size_t size) {
        return Pixels{row + x, row + width + x, row + 2 * width + x, row + 3 * width + x, size};
    };
    std::size_t x = 0;
    while (width - x >= BlockStep) {
        const std::size_t left = width - x;
        const std::size_t size = std::min(left - left % BlockStep, MaxBlock);
        if (next != nullptr) {
            prefetch(next + x, width, size);
        }
        addBlock(pixelsAt(x, size));
        x += size;
    }
    addPixels(pixelsAt(x, width - x));
}

void Statistics::report(float results[3]) const {
    results[0] = minimum_;
    results[1] = maximum_;
    // By definition, the number of pixels is rounded to single precision first.
    results[2] = count_ > 0 ? static_cast<float>(sum_ / static_cast<double>(static_cast<float>(count_))) : 0.0F;
}

} // namespace tvmeta::hdr
