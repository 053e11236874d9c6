// Compares the luminance statistics of HDR buffers with the definition.
#include "hdr/statistics.h"
#include "testing/hdr_definition.h"
#include "tvmeta.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace tvmeta::hdr;
using Buffer = std::vector<unsigned char>;

struct InstructionSet {
    const char* name;
    decltype(portable::measure)* measure;
};

// All that this processor can run.
std::vector<InstructionSet> runnableSets() {
    std::vector<InstructionSet> runnable = {{"portable", portable::measure}};
#if defined(TVMETA_X86_64) && defined(__GNUC__)
    if (__builtin_cpu_supports("avx2")) {
        runnable.push_back({"AVX2", avx2::measure});
    }
#endif
    return runnable;
}

void expectDefinition(int width, int height, const Buffer& pixels, const char* what) {
    const auto expected =
        test::hdrByDefinition(static_cast<std::size_t>(width), static_cast<std::size_t>(height), pixels.data()).results;
    std::array<float, 3> results = {-1, -1, -1};
    for (const auto& [name, measure] : runnableSets()) {
        measure(static_cast<std::size_t>(width), static_cast<std::size_t>(height), pixels.data(), results.data());
        EXPECT_EQ(results, expected) << name << ", " << what << ' ' << width << 'x' << height;
    }
    EXPECT_EQ(hdrMinMax(width, height, pixels.data(), results.data()), height);
    EXPECT_EQ(results, expected) << what << ' ' << width << 'x' << height;
}

void setPixel(Buffer& pixels, int width, std::size_t index, unsigned luminance, int exponent) {
    const auto columns = static_cast<std::size_t>(width);
    unsigned char* const pixel = &pixels[index / columns * 4 * columns + index % columns];
    pixel[0] = pixel[columns] = pixel[2 * columns] = static_cast<unsigned char>(luminance);
    pixel[3 * columns] = static_cast<unsigned char>(exponent);
}

// Appends pixels that bring the sum to the middle between two floats and the number of pixels to a power of two. The
// mean is then rounded to the float with an even last bit, the one below if `roundsDown`, so a wrong last bit of the
// sum gives another mean. Returns the new height; the old one if the numbers are too small or too large for that.
int appendTie(Buffer& pixels, int width, int height, bool roundsDown) {
    const auto [results, sum, count] =
        test::hdrByDefinition(static_cast<std::size_t>(width), static_cast<std::size_t>(height), pixels.data());
    if (!(results[2] > 1e-30F && sum < 1e30)) {
        return height;
    }
    const double halfUnit = std::ldexp(1.0, std::ilogb(sum) - 24);
    auto halves = static_cast<std::uint64_t>(std::ceil(sum / halfUnit));
    while (halves % 4 != (roundsDown ? 1U : 3U)) {
        ++halves;
    }
    std::size_t index = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const std::size_t added = 8 + (std::bit_ceil(count + 8) - count);
    const int newHeight = height + static_cast<int>(added / static_cast<std::size_t>(width)) + 1;
    pixels.resize(std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(newHeight));
    std::size_t black = std::bit_ceil(count + 8) - count;
    for (double rest = static_cast<double>(halves) * halfUnit - sum; rest > 0.0; --black) {
        const int exponent = std::ilogb(rest) - 7;
        const auto luminance = static_cast<unsigned>(std::ldexp(rest, -exponent));
        setPixel(pixels, width, index++, luminance, 128 + exponent);
        rest -= std::ldexp(luminance, exponent);
    }
    for (; black > 0; --black) {
        setPixel(pixels, width, index++, 0, 128);
    }
    return newHeight;
}

void expectExact(int width, int height, const Buffer& pixels, const char* what) {
    expectDefinition(width, height, pixels, what);
    for (const bool roundsDown : {true, false}) {
        Buffer tie = pixels;
        expectDefinition(width, appendTie(tie, width, height, roundsDown), tie, what);
    }
}

TEST(HdrMinMax, SinglePixels) {
    const struct {
        Buffer pixel;
        float minimum, maximum, mean;
    } cases[] = {
        {{255, 255, 255, 128}, 255.0F, 255.0F, 255.0F},
        {{100, 50, 200, 130}, 340.0F, 340.0F, 340.0F},
        {{0, 0, 1, 129}, 99999997952.0F, 0.0F, 0.0F}, // below the smallest luminance, but counted in the mean
        {{255, 255, 255, 0}, 99999997952.0F, 0.0F, 0.0F},
        {{255, 255, 255, 255}, 99999997952.0F, INFINITY, INFINITY},
        {{0, 1, 2, 1}, std::ldexp(1.0F, -127), std::ldexp(1.0F, -127), std::ldexp(1.0F, -127)}, // subnormal
    };
    for (const auto& test : cases) {
        float results[3];
        EXPECT_EQ(hdrMinMax(1, 1, test.pixel.data(), results), 1);
        EXPECT_EQ(std::to_array(results), (std::array{test.minimum, test.maximum, test.mean}));
    }
}

TEST(HdrMinMax, EmptyImages) {
    for (const auto& [width, height, result] : {std::array{0, 3, 3}, {-5, 3, 3}, {3, 0, 0}, {3, -1, 0}}) {
        float results[3] = {-1, -1, -1};
        EXPECT_EQ(hdrMinMax(width, height, nullptr, results), result);
        EXPECT_EQ(std::to_array(results), (std::array{99999997952.0F, 0.0F, 0.0F}));
    }
}

// Random pixels with exponents from a range, which shifts by `drift` from row to row.
struct Distribution {
    const char* what;
    int lowest, highest, drift;
    unsigned zeros;      // one pixel in `zeros` has no value; 0: all have one
    unsigned whites = 0; // of ten pixels: white, with the highest exponent
};

Buffer pixelsOf(const Distribution& distribution, int width, int height, std::mt19937& random) {
    Buffer pixels(std::size_t{4} * static_cast<std::size_t>(width * height));
    std::ranges::generate(pixels, [&] { return static_cast<unsigned char>(random()); });
    std::uniform_int_distribution<int> exponents(distribution.lowest, distribution.highest);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool none = distribution.zeros > 0 && random() % distribution.zeros == 0;
            const int exponent = none ? 0 : exponents(random) + distribution.drift * y;
            const bool white = random() % 10 < distribution.whites;
            for (int plane = 0; white && plane < 3; ++plane) {
                pixels[static_cast<std::size_t>((4 * y + plane) * width + x)] = 255;
            }
            pixels[static_cast<std::size_t>((4 * y + 3) * width + x)] =
                static_cast<unsigned char>(white ? distribution.highest : exponent);
        }
    }
    return pixels;
}

TEST(HdrMinMax, DistributionsAreBitExact) {
    const Distribution distributions[] = {{"photograph", 110, 140, 0, 50},
                                          {"narrow", 127, 128, 0, 0},
                                          {"one exponent", 120, 120, 0, 0},
                                          {"all", 0, 255, 0, 0},
                                          {"wide", 60, 190, 0, 0},
                                          {"subnormal", 1, 20, 0, 3},
                                          {"infinite", 240, 255, 0, 0},
                                          {"ties", 100, 154, 0, 0},
                                          {"rising", 1, 9, 6, 0},
                                          {"falling", 240, 246, -6, 0},
                                          {"mostly none", 0, 1, 0, 2},
                                          {"fading out", 40, 44, -1, 0},
                                          {"fading away", 200, 201, -2, 0},
                                          {"largest finite", 247, 249, 0, 0},
                                          {"widest block of floats", 120, 131, 0, 0, 9},
                                          {"too wide for floats", 120, 132, 0, 0, 9},
                                          {"widest block of doubles", 100, 135, 0, 0, 9},
                                          {"too wide for doubles", 100, 137, 0, 0, 9},
                                          {"dark after light", 180, 180, -12, 0}};
    std::mt19937 random(7);
    for (const Distribution& distribution : distributions) {
        for (const int width : {1, 7, 31, 32, 65, 511, 512, 1700}) {
            for (const int height : {1, 5, 13, 40}) { // few rows, because later rows can round an error away
                expectExact(width, height, pixelsOf(distribution, width, height, random), distribution.what);
            }
        }
    }
}

// 2^24 + 3 pixels of value 1. As a float, their number is 2^24 + 4.
TEST(HdrMinMax, NumberOfPixelsIsRoundedToSinglePrecision) {
    constexpr int Width = (1 << 24) + 3;
    Buffer pixels(std::size_t{4} * Width, 128);
    std::fill(pixels.begin() + 3 * std::ptrdiff_t{Width}, pixels.end(), static_cast<unsigned char>(121));
    float results[3];
    EXPECT_EQ(hdrMinMax(Width, 1, pixels.data(), results), 1);
    EXPECT_EQ(std::to_array(results), (std::array{1.0F, 1.0F, 0x1.fffffep-1F}));
}

// 0 * 2^127 is 0, also after a sum that is infinite.
TEST(HdrMinMax, BlackPixelsAfterInfinity) {
    constexpr int Width = 64;
    Buffer pixels(std::size_t{4} * Width * 2, 255);
    for (std::size_t x = 0; x < Width; ++x) {
        setPixel(pixels, Width, Width + x, x == 5 ? 1 : 0, x == 5 ? 128 : 255);
    }
    float results[3];
    EXPECT_EQ(hdrMinMax(Width, 2, pixels.data(), results), 2);
    EXPECT_EQ(std::to_array(results), (std::array{1.0F, INFINITY, INFINITY}));
}

// Large enough for the fastest instruction set of the processor.
TEST(HdrMinMax, LargeImageIsBitExact) {
    std::mt19937 random(8);
    expectExact(1700, 160, pixelsOf({"large", 110, 125, 0, 50}, 1700, 160, random), "large");
}

// Black pixels count in the mean but are never the minimum or maximum, whatever their exponent.
TEST(HdrMinMax, BlackPixelsAndOneNearlyBlack) {
    for (const int width : {96, 512, 3 * 512 + 40}) {
        for (const int blackExponent : {100, 110, 120}) {
            Buffer pixels(std::size_t{4} * static_cast<std::size_t>(width), 254);
            std::fill(pixels.begin() + 3 * width, pixels.end(), static_cast<unsigned char>(110));
            setPixel(pixels, width, static_cast<std::size_t>(width - 40), 255, 110);
            for (const int x : {0, 31, width / 2, width - 1}) {
                setPixel(pixels, width, static_cast<std::size_t>(x), 0, blackExponent);
            }
            float results[3];
            EXPECT_EQ(hdrMinMax(width, 1, pixels.data(), results), 1);
            EXPECT_EQ(results[0], std::ldexp(254.0F, -18)) << width << ' ' << blackExponent;
            EXPECT_EQ(results[1], std::ldexp(255.0F, -18)) << width << ' ' << blackExponent;
            expectExact(width, 1, pixels, "black pixels");
        }
    }
}

} // namespace
