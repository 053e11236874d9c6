// Support: what the processor can do beyond the instruction set that the library is compiled for.
#pragma once

#include "support/platform.h"

#if defined(__x86_64__) || defined(_M_X64) // elsewhere the portable code does everything
#define TVMETA_X86_64 1
#endif

namespace tvmeta {

#ifdef TVMETA_X86_64
// Whether the processor has AVX2 and the system saves its registers. In a virtual machine the question can take tens of
// microseconds, and the library keeps no static data to remember the answer: ask once per large task.
bool hasAvx2();
#endif

} // namespace tvmeta
