// Support: what the processor can do beyond the instruction set that the library is compiled for.
#pragma once

// Where wide vectors can be asked for: the C library tells what the processor has (glibc from 2.33 on), so nothing
// needs to be remembered here. Elsewhere the portable code does everything.
#if defined(__x86_64__) && __has_include(<sys/platform/x86.h>)
#define TVMETA_WIDE_VECTORS 1
#endif

namespace tvmeta {

#ifdef TVMETA_WIDE_VECTORS
// Vectors of 32 bytes.
bool hasAvx2() noexcept;
#endif

} // namespace tvmeta
