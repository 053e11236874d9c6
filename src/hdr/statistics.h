// HDR: luminance statistics of an image with shared exponents. Each row is four planes of bytes: blue, green and red
// mantissas, then exponents.
#pragma once

#include "support/platform.h"

#include <cstddef>

#if defined(__x86_64__) || defined(_M_X64) // elsewhere the portable code does everything
#define TVMETA_X86_64 1
#endif

namespace tvmeta::hdr {

// Stores minimum, maximum and mean. All instruction sets give the same bits.
using Measure = void(std::size_t width, std::size_t height, const unsigned char* pixels, float results[3]);

namespace portable {
Measure measure;
}
#ifdef TVMETA_X86_64
namespace avx2 { // only for processors with AVX2
Measure measure;
}

// Whether the processor and the system support AVX2. Asking can take tens of microseconds in a virtual machine, and the
// answer is not kept: ask once per large task.
bool hasAvx2();
#endif

} // namespace tvmeta::hdr
