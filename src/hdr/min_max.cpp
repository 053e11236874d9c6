#include "hdr/statistics.h"
#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <algorithm>
#include <cmath>

std::int32_t hdrMinMax(std::int32_t width, std::int32_t height, const unsigned char* pixels,
                       float results[3]) noexcept {
    using namespace tvmeta::hdr;
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
    Statistics statistics(scale);
    const std::size_t rows = empty ? 0 : static_cast<std::size_t>(height);
    const std::size_t columns = empty ? 0 : static_cast<std::size_t>(width);
    for (std::size_t y = 0; y < rows; ++y) {
        const unsigned char* const row = pixels + y * Planes * columns;
        statistics.addRow(row, columns, y + 1 < rows ? row + Planes * columns : nullptr);
    }
    statistics.store(results);
    return std::max(height, 0);
}
