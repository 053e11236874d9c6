#include "hdr/statistics.h"
#include "tvmeta.h"

#include <algorithm>

std::int32_t hdrMinMax(std::int32_t width, std::int32_t height, const unsigned char* pixels,
                       float results[3]) noexcept {
    using namespace tvmeta::hdr;
    constexpr std::int32_t NullPointer = -4;
    constexpr std::size_t MinPixelsToAsk = 1 << 18; // with fewer, the question may take longer than it saves
    const bool empty = width <= 0 || height <= 0;
    if (results == nullptr || (!empty && pixels == nullptr)) {
        return NullPointer;
    }
    const std::size_t rows = empty ? 0 : static_cast<std::size_t>(height);
    const std::size_t columns = empty ? 0 : static_cast<std::size_t>(width);
    Statistics statistics(rows * columns < MinPixelsToAsk ? PortableKernels : fastestKernels());
    for (std::size_t y = 0; y < rows; ++y) {
        const unsigned char* const row = pixels + y * Planes * columns;
        statistics.addRow(row, columns, y + 1 < rows ? row + Planes * columns : nullptr);
    }
    statistics.report(results);
    return std::max(height, 0);
}
