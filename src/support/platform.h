// Support: what differs between compilers, and what the library requires of the machine. Everything else is C++20.
#pragma once

#include <bit>
#include <cfloat>

static_assert(std::endian::native == std::endian::little,
              "samples of 16 bits and more are written as they are in memory, into little-endian files");
static_assert(sizeof(void*) == 8, "sizes of images are computed in std::size_t, which needs 64 bits");
static_assert(FLT_EVAL_METHOD == 0, "results are bit patterns, so float must not be computed in a wider type");

#ifdef __FAST_MATH__
#error "compile without -ffast-math: it changes the bits of results, and those of infinity and NaN most"
#endif

#if defined(__GNUC__) || defined(__clang__)
#define TVMETA_TARGET(features) [[gnu::target(features)]]
#define TVMETA_PREFETCH(address) __builtin_prefetch(address)
#else // MSVC compiles vector intrinsics in every function
#define TVMETA_TARGET(features)
#define TVMETA_PREFETCH(address) static_cast<void>(address)
#endif
