#include "hdr/statistics.h"
#include "tvmeta.h"

#include <algorithm>
#include <cstdint>

using namespace tvmeta;

std::int32_t hdrMinMax(std::int32_t width, std::int32_t height, const unsigned char* pixels,
                       float results[3]) noexcept {
    const bool empty = width <= 0 || height <= 0;
    if (results == nullptr || (!empty && pixels == nullptr)) {
        return HDR_BAD_ARGUMENTS;
    }
    const std::size_t rows = empty ? 0 : static_cast<std::size_t>(height);
    const std::size_t columns = empty ? 0 : static_cast<std::size_t>(width);
    auto* measure = hdr::portable::measure;
#ifdef TVMETA_X86_64
    // Asking takes longer than it saves on a small image.
    constexpr std::size_t MinPixelsToAsk = 1 << 18;
    if (rows * columns >= MinPixelsToAsk && hdr::hasAvx2()) {
        measure = hdr::avx2::measure;
    }
#endif
    measure(columns, rows, pixels, results);
    return std::max(height, 0);
}
