#include "support/processor.h"

#ifdef TVMETA_X86_64

#include <cpuid.h>
#include <immintrin.h>

namespace tvmeta {

TVMETA_TARGET("xsave") bool hasAvx2() {
    constexpr unsigned VectorRegisters = 0b110; // of 16 and of 32 bytes, in register XCR0
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & bit_OSXSAVE) == 0 ||
        (_xgetbv(0) & VectorRegisters) != VectorRegisters) {
        return false;
    }
    return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_AVX2) != 0;
}

} // namespace tvmeta

#endif
