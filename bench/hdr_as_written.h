// The definition of the HDR statistics: pixel by pixel, in row order.
#pragma once

#include <cstddef>

namespace bench {

struct HdrStatistics {
    float minimum;
    float maximum;
    float mean;
};

HdrStatistics measureAsWritten(std::size_t width, std::size_t height, const unsigned char* pixels);

} // namespace bench
