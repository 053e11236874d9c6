// The statistics of an HDR buffer in the plainest form: pixel by pixel, in the order of the rows.
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
