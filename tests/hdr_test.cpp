// Compares the luminance statistics of HDR buffers with the definition.
#include "hdr/statistics.h"
#include "tvmeta.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace tvmeta::hdr;
using Buffer = std::vector<unsigned char>;

// The definition: pixel by pixel in row order, each value added to one double.
double measureInOrder(int width, int height, const Buffer& pixels, float results[3]) {
    float minimum = 99999997952.0F;
    float maximum = 0.0F;
    double sum = 0.0;
    std::uint64_t count = 0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* row =
            pixels.data() + std::size_t{4} * static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
        for (int x = 0; x < width; ++x) {
            const int exponent = row[3 * width + x];
            if (exponent == 0) {
                continue;
            }
            const int luminance = (19 * row[x] + 183 * row[width + x] + 54 * row[2 * width + x]) >> 8;
            const float value = static_cast<float>(luminance) * static_cast<float>(std::ldexp(1.0, exponent - 128));
            minimum = value > 0 && value < minimum ? value : minimum;
            maximum = value > maximum ? value : maximum;
            sum += static_cast<double>(value);
            ++count;
        }
    }
    results[0] = minimum;
    results[1] = maximum;
    results[2] = count == 0 ? 0.0F : static_cast<float>(sum / static_cast<double>(static_cast<float>(count)));
    return sum;
}

struct NamedKernels {
    const char* name;
    const BlockKernels* kernels;
};

// All kernels that this processor can run.
std::vector<NamedKernels> runnableKernels() {
    std::vector<NamedKernels> runnable = {{"portable", &PortableKernels}};
#if defined(TVMETA_X86_64) && defined(__GNUC__)
    if (__builtin_cpu_supports("avx2")) {
        runnable.push_back({"AVX2", &Avx2Kernels});
    }
#endif
    return runnable;
}

void expectExact(int width, int height, const Buffer& pixels, const char* what) {
    float expected[3];
    const double expectedSum = measureInOrder(width, height, pixels, expected);
    const auto columns = static_cast<std::size_t>(width);
    for (const auto& [name, kernels] : runnableKernels()) {
        Statistics statistics(*kernels);
        for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
            statistics.addRow(pixels.data() + 4 * y * columns, columns, nullptr);
        }
        float results[3] = {-1, -1, -1};
        statistics.report(results);
        EXPECT_EQ(std::memcmp(results, expected, sizeof results), 0)
            << name << ", " << what << ' ' << width << 'x' << height << ": " << results[0] << ' ' << results[1] << ' '
            << results[2] << ", expected " << expected[0] << ' ' << expected[1] << ' ' << expected[2];
        EXPECT_EQ(statistics.sum(), expectedSum) << name << ", " << what; // rounding the mean could hide a wrong bit
    }
    float results[3] = {-1, -1, -1};
    EXPECT_EQ(hdrMinMax(width, height, pixels.data(), results), height);
    EXPECT_EQ(std::memcmp(results, expected, sizeof results), 0) << what;
}

#if defined(TVMETA_X86_64) && defined(__GNUC__)
TEST(Kernels, AreTheFastestOfTheProcessor) {
    EXPECT_EQ(&fastestKernels(), runnableKernels().back().kernels);
}
#endif

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
                                          {"widest block", 120, 131, 0, 0, 9},
                                          {"too wide a block", 120, 132, 0, 0, 9}};
    std::mt19937 random(7);
    for (const Distribution& distribution : distributions) {
        for (const int width : {1, 7, 255, 511, 512, 513, 1700}) {
            for (const int height : {1, 12, 13, 14, 40}) { // few rows, because later rows can round an error away
                expectExact(width, height, pixelsOf(distribution, width, height, random), distribution.what);
            }
        }
    }
}

// Black pixels count in the mean but are never the minimum or maximum, whatever their exponent.
TEST(HdrMinMax, BlackPixelsAndOneNearlyBlack) {
    for (const int width : {96, 512, 5 * 512 + 40}) {
        for (const int blackExponent : {100, 110, 120}) {
            Buffer pixels(std::size_t{4} * static_cast<std::size_t>(width), 254);
            std::fill(pixels.begin() + 3 * width, pixels.end(), static_cast<unsigned char>(110));
            const auto set = [&](int x, int luminance, int exponent) {
                for (int plane = 0; plane < 4; ++plane) {
                    pixels[static_cast<std::size_t>(plane * width + x)] =
                        static_cast<unsigned char>(plane < 3 ? luminance : exponent);
                }
            };
            set(width - 40, 255, 110);
            for (const int x : {0, 31, width / 2, width - 1}) {
                set(x, 0, blackExponent);
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
