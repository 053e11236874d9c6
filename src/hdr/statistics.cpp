// Luminance statistics of an HDR buffer. By definition the values are added one by one in row order, in double
// precision. Whole blocks are added at once where no rounding can happen in any order, or where each value is rounded
// on its own, and passed over where every value would be rounded away: the bits are those of the definition.
#include "hdr/statistics.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace tvmeta::hdr {

namespace {

constexpr float LargestLuminance = 255.0F;

// Above this exponent a value may be too large for single precision, and counts as infinity.
constexpr int HighestFinite = 248;

// Fewer pixels at the end of a row are not worth a block.
constexpr std::size_t SmallestBlock = 48;

constexpr int MantissaBits = std::numeric_limits<double>::digits; // the leading one included
constexpr int DoubleBias = 1023;

constexpr double powerOfTwo(int power) noexcept {
    return std::bit_cast<double>(static_cast<std::uint64_t>(power + DoubleBias) << (MantissaBits - 1));
}

constexpr int exponentOf(double number) noexcept {
    return static_cast<int>(std::bit_cast<std::uint64_t>(number) >> (MantissaBits - 1)) - DoubleBias;
}

// The power of two of the last significant bit of a number that is above zero and not subnormal.
constexpr int lastPlace(double number) noexcept {
    constexpr std::uint64_t LeadingOne = std::uint64_t{1} << (MantissaBits - 1);
    const std::uint64_t mantissa = (std::bit_cast<std::uint64_t>(number) & (LeadingOne - 1)) | LeadingOne;
    return exponentOf(number) - (MantissaBits - 1) + std::countr_zero(mantissa);
}

// The processor guesses four streams that jump from row to row badly. Told a row ahead, it has each block at hand.
void prefetch(const unsigned char* block, std::size_t width) noexcept {
    constexpr std::size_t CacheLine = 64;
    for (std::size_t plane = 0; plane < Planes; ++plane) {
        for (std::size_t i = 0; i < BlockPixels; i += CacheLine) {
            __builtin_prefetch(block + plane * width + i);
        }
    }
}

} // namespace

// The definition, for what does not fill a block.
void Statistics::addPixels(const Block& rest, std::size_t pixels) noexcept {
    for (std::size_t i = 0; i < pixels; ++i) {
        if (rest.exponent[i] == 0) {
            continue;
        }
        const float value =
            static_cast<float>(luminance(rest.blue[i], rest.green[i], rest.red[i])) * scale_[rest.exponent[i]];
        if (value > 0.0F && value < minimum_) {
            minimum_ = value;
        }
        maximum_ = std::max(maximum_, value);
        sum_ += static_cast<double>(value);
        ++count_;
    }
}

// Only exponents whose brightest pixel would be brighter than the maximum are looked at: few, once there is one.
void Statistics::updateMaximum(const unsigned char* luminance, const unsigned char* exponents,
                               const ExponentRange& range) noexcept {
    for (int exponent = range.highest; exponent >= range.lowest && LargestLuminance * scale_[exponent] > maximum_;
         --exponent) {
        const int found = kernels_.highestLuminance(luminance, exponents, exponent);
        maximum_ = std::max(maximum_, static_cast<float>(found) * scale_[exponent]);
    }
}

void Statistics::updateMinimum(const unsigned char* luminance, const unsigned char* exponents,
                               const ExponentRange& range) noexcept {
    for (int exponent = range.lowest; exponent <= range.highest && scale_[exponent] < minimum_; ++exponent) {
        const int found = kernels_.lowestLuminance(luminance, exponents, exponent);
        if (found != NoLuminance) {
            minimum_ = std::min(minimum_, static_cast<float>(found) * scale_[exponent]);
        }
    }
}

// Whether the sum so far and the block's values are multiples of a unit of which the result, and so everything on the
// way to it, needs no more than the mantissa holds: then nothing is rounded, whatever the order, the block's exponents
// span ExactSpan at most, and the sum is finite.
bool Statistics::isExact(const ExponentRange& range, double largestSum) const noexcept {
    if (range.highest > HighestFinite) {
        return false;
    }
    const int blockUnit = range.lowest - ExponentBias;
    const int unit = sum_ > 0.0 ? std::min(blockUnit, lastPlace(sum_)) : blockUnit;
    return sum_ + largestSum <= powerOfTwo(MantissaBits + unit);
}

void Statistics::addSum(const unsigned char* luminance, const unsigned char* exponents,
                        const ExponentRange& range) noexcept {
    const double largest = LargestLuminance * powerOfTwo(range.highest - ExponentBias);
    if (isExact(range, largest * BlockPixels)) {
        sum_ +=
            kernels_.sum(luminance, exponents, range.lowest, range.highest) * powerOfTwo(range.lowest - ExponentBias);
        return;
    }
    // Less than half a unit in the last place of the sum is rounded away, whatever the order.
    const bool vanishes = sum_ > 0.0 && largest < powerOfTwo(exponentOf(sum_) - MantissaBits);
    if (vanishes) {
        return;
    }
    const int unit = exponentOf(sum_) - (MantissaBits - 1) + ExponentBias;
    if (keepsUnit(unit, range)) {
        addRounded(luminance, exponents, unit, range.highest);
    } else {
        addInOrder(luminance, exponents);
    }
}

// Whether the block, rounded up, leaves the sum's unit in the last place as it is. A sum of 0 has a unit far below all
// exponents; one with a unit above them would take more pixels than memory can hold.
bool Statistics::keepsUnit(int unit, const ExponentRange& range) const noexcept {
    if (unit < LowestUnit || range.highest > HighestFinite) {
        return false;
    }
    const double bound = powerOfTwo(range.highest - ExponentBias + LuminanceBits + BlockBits);
    return sum_ + bound < powerOfTwo(unit - ExponentBias + MantissaBits);
}

// While the sum keeps its unit in the last place, an addition rounds the value added to a multiple of that unit: to the
// nearest one, and from half-way to the one that makes the sum even (IEEE 754, roundTiesToEven).
void Statistics::addRounded(const unsigned char* luminance, const unsigned char* exponents, int unit,
                            int highest) noexcept {
    const bool isOdd = (std::bit_cast<std::uint64_t>(sum_) & 1) != 0;
    sum_ += kernels_.roundedSum(luminance, exponents, unit, highest, isOdd) * powerOfTwo(unit - ExponentBias);
}

void Statistics::addInOrder(const unsigned char* luminance, const unsigned char* exponents) noexcept {
    double sum = sum_;
    for (std::size_t i = 0; i < BlockPixels; ++i) {
        // 0 where there is no pixel, which changes nothing
        sum += static_cast<double>(static_cast<float>(luminance[i]) * scale_[exponents[i]]);
    }
    sum_ = sum;
}

void Statistics::addBlock(const Block& block) noexcept {
    const ExponentRange range = kernels_.exponentRange(block.exponent);
    if (range.highest == 0) {
        return;
    }
    unsigned char luminance[BlockPixels];
    kernels_.luminances(block, luminance);
    count_ += range.complete ? BlockPixels : countPixels(block.exponent);
    updateMaximum(luminance, block.exponent, range);
    updateMinimum(luminance, block.exponent, range);
    addSum(luminance, block.exponent, range);
}

// The end of a row, filled up with exponents of 0: no pixels.
void Statistics::addPaddedBlock(const Block& rest, std::size_t pixels) noexcept {
    unsigned char planes[Planes][BlockPixels] = {};
    std::copy_n(rest.blue, pixels, planes[0]);
    std::copy_n(rest.green, pixels, planes[1]);
    std::copy_n(rest.red, pixels, planes[2]);
    std::copy_n(rest.exponent, pixels, planes[3]);
    addBlock({planes[0], planes[1], planes[2], planes[3]});
}

void Statistics::addRow(const unsigned char* row, std::size_t width, const unsigned char* next) noexcept {
    const auto blockAt = [row, width](std::size_t x) {
        return Block{row + x, row + width + x, row + 2 * width + x, row + 3 * width + x};
    };
    std::size_t x = 0;
    for (; width - x >= BlockPixels; x += BlockPixels) {
        if (next != nullptr) {
            prefetch(next + x, width);
        }
        addBlock(blockAt(x));
    }
    if (width - x >= SmallestBlock) {
        addPaddedBlock(blockAt(x), width - x);
    } else {
        addPixels(blockAt(x), width - x);
    }
}

void Statistics::store(float results[3]) const noexcept {
    results[0] = minimum_;
    results[1] = maximum_;
    // The number of pixels goes through single precision on its way into the mean.
    results[2] = count_ > 0 ? static_cast<float>(sum_ / static_cast<double>(static_cast<float>(count_))) : 0.0F;
}

} // namespace tvmeta::hdr
