// Luminance statistics of an HDR buffer in shared-exponent form.
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <cmath>
#include <cstdint>

namespace {

constexpr std::size_t Exponents = 256;
constexpr int ExponentBias = 128;

// ITU-R BT.709 luminance weights in units of 1/256.
constexpr unsigned BlueWeight = 19;
constexpr unsigned GreenWeight = 183;
constexpr unsigned RedWeight = 54;

struct Statistics {
    float minimum = 99999997952.0F;
    float maximum = 0.0F;
    double sum = 0.0;
    std::uint64_t count = 0;

    float mean() const noexcept {
        return count > 0 ? static_cast<float>(sum / static_cast<double>(static_cast<float>(count))) : 0.0F;
    }
};

void addRow(Statistics& statistics, const unsigned char* row, std::size_t width, const float* scale) noexcept {
    const unsigned char* const blue = row;
    const unsigned char* const green = row + width;
    const unsigned char* const red = row + 2 * width;
    const unsigned char* const exponent = row + 3 * width;
    for (std::size_t x = 0; x < width; ++x) {
        if (exponent[x] == 0) {
            continue;
        }
        const unsigned luminance = (BlueWeight * blue[x] + GreenWeight * green[x] + RedWeight * red[x]) >> 8;
        const float value = static_cast<float>(luminance) * scale[exponent[x]];
        if (value > 0.0F && value < statistics.minimum) {
            statistics.minimum = value;
        }
        if (value > statistics.maximum) {
            statistics.maximum = value;
        }
        statistics.sum += static_cast<double>(value);
        ++statistics.count;
    }
}

} // namespace

std::int32_t hdrMinMax(std::int32_t width, std::int32_t height, const unsigned char* pixels,
                       float results[3]) noexcept {
    constexpr std::int32_t NoMemory = -4;
    const bool empty = width <= 0 || height <= 0;
    tvmeta::ZeroedBuffer table(Exponents * sizeof(float));
    if (!table || results == nullptr || (!empty && pixels == nullptr)) {
        return NoMemory;
    }
    auto* const scale = reinterpret_cast<float*>(table.data());
    for (std::size_t i = 0; i < Exponents; ++i) {
        scale[i] = static_cast<float>(std::ldexp(1.0, static_cast<int>(i) - ExponentBias));
    }
    Statistics statistics;
    const std::size_t rows = empty ? 0 : static_cast<std::size_t>(height);
    for (std::size_t y = 0; y < rows; ++y) {
        addRow(statistics, pixels + y * 4 * static_cast<std::size_t>(width), static_cast<std::size_t>(width), scale);
    }
    results[0] = statistics.minimum;
    results[1] = statistics.maximum;
    results[2] = statistics.mean();
    return height > 0 ? height : 0;
}
