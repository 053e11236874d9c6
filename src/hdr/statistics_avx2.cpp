// The statistics once more, compiled for AVX2. The headers come first, so that their functions are not.
#include "hdr/statistics.h"

#ifdef TVMETA_X86_64

#include <cstdint>
#include <cstring>
#include <limits>

#define TVMETA_INSTRUCTION_SET avx2
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#elif defined(__GNUC__)
#pragma GCC target("avx2")
#endif
#include "hdr/statistics.cpp"
#if defined(__clang__)
#pragma clang attribute pop
#endif

#endif
