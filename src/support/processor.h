// Support: what the processor can do beyond the instruction set that the library is compiled for.
#pragma once

#include "support/platform.h"

#if defined(__x86_64__) || defined(_M_X64) // elsewhere the portable code does everything
#define TVMETA_X86_64 1
#endif

namespace tvmeta {

#ifdef TVMETA_X86_64
// Whether the processor and the system support AVX2. Asking can take tens of microseconds in a virtual machine, and the
// answer is not kept: ask once per large task.
bool hasAvx2();
#endif

} // namespace tvmeta
