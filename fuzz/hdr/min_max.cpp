// Luminance statistics, against a plain sum over the pixels in their order.
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

// The exponents of so many pixels: from the first on, as many as the span says.
constexpr std::size_t StretchPixels = 128;
struct Stretch {
    int first;
    int span;
};

// Rows of some blocks of pixels, whose exponents lie close together or far apart, as each stretch of them wants it. The
// rest of the input is repeated until it fills the planes.
Picture takePicture(FuzzedDataProvider& input) {
    Picture picture;
    picture.width = input.ConsumeIntegralInRange<std::size_t>(1, 800);
    picture.height = input.ConsumeIntegralInRange<std::size_t>(0, 4);
    std::vector<Stretch> stretches(picture.height * picture.width / StretchPixels + 1);
    for (Stretch& stretch : stretches) {
        stretch.first = input.ConsumeIntegral<std::uint8_t>();
        stretch.span = input.ConsumeIntegral<std::uint8_t>() % 64 + 1;
    }
    Bytes pattern = input.ConsumeRemainingBytes<std::uint8_t>();
    pattern.push_back(1);
    picture.pixels.resize(4 * picture.width * picture.height);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const std::uint8_t byte = pattern[i % pattern.size()];
        const std::size_t row = i / (4 * picture.width);
        const std::size_t column = i % (4 * picture.width);
        const bool isExponent = column >= 3 * picture.width;
        const Stretch& stretch = stretches[(row * picture.width + column % picture.width) / StretchPixels];
        picture.pixels[i] =
            isExponent ? static_cast<std::uint8_t>(std::min(stretch.first + byte % stretch.span, 255)) : byte;
    }
    return picture;
}

// What an exponent stands for.
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
    if (empty) { // a size that means no pixels
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
