// HDR: luminance statistics of an image with shared exponents. Each row is four planes of bytes: blue, green and red
// mantissas, then exponents.
#pragma once

#include "support/processor.h"

#include <cstddef>

namespace tvmeta::hdr {

// Stores minimum, maximum and mean. All instruction sets give the same bits.
#define TVMETA_DECLARE_MEASURE                                                                                         \
    void measure(std::size_t width, std::size_t height, const unsigned char* pixels, float results[3]);

namespace portable {
TVMETA_DECLARE_MEASURE
}
#ifdef TVMETA_X86_64
namespace avx2 { // only for processors with AVX2
TVMETA_DECLARE_MEASURE
}
#endif

} // namespace tvmeta::hdr
