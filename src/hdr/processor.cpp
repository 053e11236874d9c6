#include "hdr/statistics.h"

#ifdef TVMETA_X86_64

#include <immintrin.h>
#ifdef _WIN32
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace tvmeta::hdr {

namespace {

struct Registers {
    int eax, ebx, ecx, edx;
};

Registers cpuid(int leaf) {
    int values[4];
#ifdef _WIN32
    __cpuidex(values, leaf, 0);
#else
    __cpuid_count(leaf, 0, values[0], values[1], values[2], values[3]);
#endif
    return {values[0], values[1], values[2], values[3]};
}

} // namespace

TVMETA_TARGET("xsave") bool hasAvx2() {
    constexpr int Features = 1;
    constexpr int MoreFeatures = 7;
    constexpr int SavesRegisters = 1 << 27;     // OSXSAVE, in ecx of Features
    constexpr int Avx2 = 1 << 5;                // in ebx of MoreFeatures
    constexpr unsigned VectorRegisters = 0b110; // of 16 and of 32 bytes, in register XCR0
    return cpuid(0).eax >= MoreFeatures && (cpuid(Features).ecx & SavesRegisters) != 0 &&
           (_xgetbv(0) & VectorRegisters) == VectorRegisters && (cpuid(MoreFeatures).ebx & Avx2) != 0;
}

} // namespace tvmeta::hdr

#endif
