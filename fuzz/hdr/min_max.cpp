// Compares the luminance statistics with a plain sum over the pixels in order.
#include "support.h"

#include <cmath>

using namespace fuzz;

namespace {

using Results = std::array<float, 3>;

struct Picture {
    std::size_t width;
    std::size_t height;
    Bytes pixels;
};

// A run of pixels with exponents in [first, first + span).
constexpr std::size_t RunPixels = 128;
struct Run {
    int first;
    int span;
};

// Rows of several blocks of pixels. Each run chooses how far apart its exponents are. The rest of the input is repeated
// to fill the planes.
Picture takePicture(FuzzedDataProvider& input) {
    Picture picture;
    picture.width = input.ConsumeIntegralInRange<std::size_t>(1, 800);
    picture.height = input.ConsumeIntegralInRange<std::size_t>(0, 4);
    std::vector<Run> runs(picture.height * picture.width / RunPixels + 1);
    for (Run& run : runs) {
        run.first = input.ConsumeIntegral<std::uint8_t>();
        run.span = input.ConsumeIntegral<std::uint8_t>() % 64 + 1;
    }
    Bytes pattern = input.ConsumeRemainingBytes<std::uint8_t>();
    pattern.push_back(1);
    picture.pixels.resize(4 * picture.width * picture.height);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const std::uint8_t byte = pattern[i % pattern.size()];
        const std::size_t row = i / (4 * picture.width);
        const std::size_t column = i % (4 * picture.width);
        const bool isExponent = column >= 3 * picture.width;
        const Run& run = runs[(row * picture.width + column % picture.width) / RunPixels];
        picture.pixels[i] = isExponent ? static_cast<std::uint8_t>(std::min(run.first + byte % run.span, 255)) : byte;
    }
    return picture;
}

// The scale of an exponent.
std::array<double, 256> powersOfTwo() {
    std::array<double, 256> powers = {};
    for (std::size_t i = 0; i < powers.size(); ++i) {
        powers[i] = std::ldexp(1.0, static_cast<int>(i) - 128);
    }
    return powers;
}

Results expectedResults(const Picture& picture) {
    static const std::array<double, 256> powers = powersOfTwo();
    Results results = {99999997952.0F, 0.0F, 0.0F};
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < picture.width * picture.height; ++i) {
        const std::size_t width = picture.width;
        const std::uint8_t* const blue = picture.pixels.data() + i / width * 4 * width + i % width;
        const std::uint8_t exponent = blue[3 * width];
        if (exponent == 0) {
            continue;
        }
        const int luminance = (19 * blue[0] + 183 * blue[width] + 54 * blue[2 * width]) / 256;
        const auto value = static_cast<float>(luminance * powers[exponent]);
        results[0] = value > 0.0F && value < results[0] ? value : results[0];
        results[1] = std::max(results[1], value);
        sum += static_cast<double>(value);
        ++count;
    }
    results[2] = count > 0 ? static_cast<float>(sum / static_cast<double>(count)) : 0.0F;
    return results;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const bool empty = input.ConsumeIntegralInRange<int>(0, 99) == 99;
    Picture picture = takePicture(input);
    std::int32_t width = lengthOf(picture.width);
    std::int32_t height = lengthOf(picture.height);
    if (empty) { // a size without pixels
        (picture.height % 2 == 0 ? width : height) *= -1;
        picture = {};
    }
    Results results = {-1.0F, -1.0F, -1.0F};
    const unsigned char* const pixels = picture.pixels.empty() ? nullptr : picture.pixels.data();
    require(hdrMinMax(width, height, pixels, results.data()) == std::max(height, 0), "the result is the height");
    const Results expected = expectedResults(picture);
    require(std::memcmp(results.data(), expected.data(), sizeof results) == 0, "the statistics agree to the last bit");
    return 0;
}
