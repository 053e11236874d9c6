// `addPixels` is the definition: value after value in row order, added in double precision. `addBlock` gives the same
// bits for up to 512 pixels at once, in loops that the compiler vectorizes.
//
// statistics_avx2.cpp includes this file, to compile it once more. It calls no inline function or template of a header:
// the linker might choose the copy compiled for AVX2 for all of the library.
#include "hdr/statistics.h"

#include <cstdint>
#include <cstring>
#include <limits>

#ifndef TVMETA_INSTRUCTION_SET
#define TVMETA_INSTRUCTION_SET portable
#endif

namespace tvmeta::hdr::TVMETA_INSTRUCTION_SET {

namespace {

constexpr std::size_t Planes = 4;
constexpr std::size_t Step = 32; // a block's size is a multiple of it
constexpr int BlockBits = 9;     // larger blocks span more exponents, so that fewer are exact
constexpr std::size_t MaxBlock = std::size_t{1} << BlockBits;
constexpr int LuminanceBits = 8;
constexpr double MaxLuminance = (1 << LuminanceBits) - 1;
constexpr float Infinity = std::numeric_limits<float>::infinity();

// Sums in single precision have this number of lanes: four vectors of 32 bytes, so that additions do not wait for each
// other.
constexpr int LaneBits = 5;

// Above this exponent, a sum of doubled values may be infinite in single precision.
constexpr unsigned MaxFiniteExponent = 255 - LuminanceBits - (BlockBits - LaneBits);

// Pixels side by side in each of the four planes of a row. A pixel with exponent 0 does not count.
struct Pixels {
    const unsigned char* blue;
    const unsigned char* green;
    const unsigned char* red;
    const unsigned char* exponent;
    std::size_t size;
};

// The exponents of the pixels that count. Without any, `highest` is 0.
struct ExponentRange {
    unsigned lowest;
    unsigned highest;
    unsigned count;
};

struct Extremes {
    float smallest; // above 0
    float largest;
};

template <typename Number>
Number smaller(Number a, Number b) {
    return a < b ? a : b;
}

template <typename Number>
Number larger(Number a, Number b) {
    return a > b ? a : b;
}

template <typename Number, typename Bits>
Number fromBits(Bits bits) {
    static_assert(sizeof(Number) == sizeof bits);
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

// 2^(exponent - 128).
double scaleOf(unsigned exponent) {
    return fromBits<double>(std::uint64_t{exponent + 1023 - 128} << (std::numeric_limits<double>::digits - 1));
}

// The value of the last bit that is set in a number above 0.
double lastBit(double number) {
    constexpr auto Fraction = (std::uint64_t{1} << (std::numeric_limits<double>::digits - 1)) - 1;
    const auto bits = fromBits<std::uint64_t>(number);
    return (bits & Fraction) != 0 ? number - fromBits<double>(bits & (bits - 1)) : number;
}

// A luminance mantissa, with the weights of ITU-R BT.709 in units of 1/256. The weighted sum fits 16 bits.
std::uint16_t luminance(unsigned char blue, unsigned char green, unsigned char red) {
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(19 * blue + 183 * green + 54 * red) >> 8);
}

ExponentRange exponentRange(const unsigned char* exponents, std::size_t size) {
    unsigned char lowest[Step];  // less one, so that an exponent of 0 becomes the highest
    unsigned char highest[Step]; // gcc initialises an array in parts, which one load must then wait for
    unsigned char counts[Step];
    std::memset(lowest, 0xFF, sizeof lowest);
    std::memset(highest, 0, sizeof highest);
    std::memset(counts, 0, sizeof counts);
    for (std::size_t i = 0; i < size; i += Step) {
        for (std::size_t lane = 0; lane < Step; ++lane) {
            const unsigned char exponent = exponents[i + lane];
            lowest[lane] = smaller(lowest[lane], static_cast<unsigned char>(exponent - 1));
            highest[lane] = larger(highest[lane], exponent);
            counts[lane] = static_cast<unsigned char>(counts[lane] + (exponent != 0 ? 1 : 0));
        }
    }
    ExponentRange range = {0xFF, 0, 0};
    for (std::size_t lane = 0; lane < Step; ++lane) {
        range = {smaller<unsigned>(range.lowest, lowest[lane]), larger<unsigned>(range.highest, highest[lane]),
                 range.count + counts[lane]};
    }
    return {range.lowest + 1, range.highest, range.count};
}

// Twice the value of each pixel: the exponent is then that of a float without further arithmetic, and 0 gives 0. An
// exponent of 255 gives infinity or NaN. Hardware prefetch misses the four-plane stride, so prefetch `ahead` bytes
// ahead, as evenly as the pixels are read.
void doubledValues(const Pixels& block, std::size_t ahead, float* __restrict values) {
    constexpr int FractionBits = std::numeric_limits<float>::digits - 1;
    const auto [blue, green, red, exponent, size] = block;
    for (std::size_t i = 0; i < size; i += Step) {
        TVMETA_PREFETCH(blue + i + ahead);
        TVMETA_PREFETCH(green + i + ahead);
        TVMETA_PREFETCH(red + i + ahead);
        TVMETA_PREFETCH(exponent + i + ahead);
        for (std::size_t lane = i; lane < i + Step; ++lane) {
            values[lane] = static_cast<float>(luminance(blue[lane], green[lane], red[lane])) *
                           fromBits<float>(std::uint32_t{exponent[lane]} << FractionBits);
        }
    }
}

// NaN changes neither.
Extremes extremesOf(const float* values, std::size_t size) {
    constexpr std::size_t Lanes = 16;
    float smallest[Lanes];
    float largest[Lanes] = {};
    for (float& value : smallest) {
        value = Infinity;
    }
    for (std::size_t i = 0; i < size; i += Lanes) {
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            const float value = values[i + lane];
            smallest[lane] = smaller(value > 0.0F ? value : Infinity, smallest[lane]);
            largest[lane] = larger(value, largest[lane]);
        }
    }
    Extremes extremes = {Infinity, 0.0F};
    for (std::size_t lane = 0; lane < Lanes; ++lane) {
        extremes.smallest = smaller(extremes.smallest, smallest[lane]);
        extremes.largest = larger(extremes.largest, largest[lane]);
    }
    return extremes;
}

template <typename Number>
double sumOf(const float* values, std::size_t size) {
    constexpr std::size_t Lanes = (sizeof(float) << LaneBits) / sizeof(Number);
    Number sums[Lanes] = {};
    for (std::size_t i = 0; i < size; i += Lanes) {
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            sums[lane] += static_cast<Number>(values[i + lane]);
        }
    }
    constexpr std::size_t Quarter = 4;
    double totals[Quarter] = {};
    for (std::size_t i = 0; i < Lanes; i += Quarter) {
        for (std::size_t lane = 0; lane < Quarter; ++lane) {
            totals[lane] += static_cast<double>(sums[i + lane]);
        }
    }
    return (totals[0] + totals[1]) + (totals[2] + totals[3]);
}

class Statistics {
  public:
    void addRow(const unsigned char* row, std::size_t width, std::size_t ahead);
    void report(float results[3]) const;

  private:
    void addPixels(const Pixels& pixels);
    void addBlock(const Pixels& block, std::size_t ahead);
    void addSum(const float* doubled, std::size_t size, const ExponentRange& range);
    bool isExact(const ExponentRange& range) const;

    float minimum_ = 99999997952.0F; // the float nearest to 10^11
    float maximum_ = 0.0F;
    double sum_ = 0.0;
    std::uint64_t count_ = 0;
};

void Statistics::addPixels(const Pixels& pixels) {
    Extremes extremes = {minimum_, maximum_};
    double sum = sum_;
    for (std::size_t i = 0; i < pixels.size; ++i) {
        if (pixels.exponent[i] == 0) {
            continue;
        }
        const float value = static_cast<float>(luminance(pixels.blue[i], pixels.green[i], pixels.red[i])) *
                            static_cast<float>(scaleOf(pixels.exponent[i]));
        extremes.smallest = smaller(value > 0.0F ? value : Infinity, extremes.smallest);
        extremes.largest = larger(value, extremes.largest);
        sum += static_cast<double>(value);
        ++count_;
    }
    minimum_ = extremes.smallest;
    maximum_ = extremes.largest;
    sum_ = sum;
}

// After an infinite value, only the minimum and the number of pixels can change.
void Statistics::addBlock(const Pixels& block, std::size_t ahead) {
    const ExponentRange range = exponentRange(block.exponent, block.size);
    if (range.highest == 0) {
        return;
    }
    if (range.highest > MaxFiniteExponent && maximum_ < Infinity) {
        addPixels(block);
        return;
    }
    count_ += range.count;
    float doubled[MaxBlock];
    doubledValues(block, ahead, doubled);
    if (scaleOf(range.lowest) < static_cast<double>(minimum_) ||
        MaxLuminance * scaleOf(range.highest) > static_cast<double>(maximum_)) {
        const Extremes extremes = extremesOf(doubled, block.size);
        minimum_ = smaller(minimum_, extremes.smallest / 2.0F);
        maximum_ = larger(maximum_, extremes.largest / 2.0F);
    }
    if (maximum_ < Infinity) {
        addSum(doubled, block.size, range);
    }
}

void Statistics::addSum(const float* doubled, std::size_t size, const ExponentRange& range) {
    // The bits of a luminance, of the span and of the number of values in a lane fit a float.
    constexpr int FloatSpan = std::numeric_limits<float>::digits - LuminanceBits - (BlockBits - LaneBits);
    if (isExact(range)) {
        const bool fitsFloat = range.highest - range.lowest <= FloatSpan;
        sum_ += (fitsFloat ? sumOf<float>(doubled, size) : sumOf<double>(doubled, size)) / 2.0;
        return;
    }
    double sum = sum_;
    for (std::size_t i = 0; i < size; ++i) {
        sum += static_cast<double>(doubled[i]) / 2.0;
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
    constexpr double MaxBlockSum = 1 << (LuminanceBits + BlockBits); // of luminances
    const double blockUnit = scaleOf(range.lowest);
    const double unit = sum_ > 0.0 ? smaller(blockUnit, lastBit(sum_)) : blockUnit;
    return sum_ + MaxBlockSum * scaleOf(range.highest) <= MaxUnits * unit;
}

// The next row is `ahead` bytes ahead.
void Statistics::addRow(const unsigned char* row, std::size_t width, std::size_t ahead) {
    const auto pixelsAt = [row, width](std::size_t x, std::size_t size) {
        return Pixels{row + x, row + width + x, row + 2 * width + x, row + 3 * width + x, size};
    };
    std::size_t x = 0;
    while (width - x >= Step) {
        const std::size_t left = width - x;
        const std::size_t size = smaller(left - left % Step, MaxBlock);
        addBlock(pixelsAt(x, size), ahead);
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

} // namespace

void measure(std::size_t width, std::size_t height, const unsigned char* pixels, float results[3]) {
    Statistics statistics;
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t rowSize = Planes * width;
        statistics.addRow(pixels + y * rowSize, width, y + 1 < height ? rowSize : 0);
    }
    statistics.report(results);
}

} // namespace tvmeta::hdr::TVMETA_INSTRUCTION_SET
