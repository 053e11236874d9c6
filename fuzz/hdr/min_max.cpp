// Compares the luminance statistics with their definition.
#include "support.h"
#include "testing/hdr_definition.h"

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
    const Results expected = test::hdrByDefinition(picture.width, picture.height, picture.pixels.data()).results;
    require(std::memcmp(results.data(), expected.data(), sizeof results) == 0, "the statistics agree to the last bit");
    return 0;
}
