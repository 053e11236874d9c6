#include "support/processor.h"

#ifdef TVMETA_X86_64

#include <immintrin.h>
#ifdef _WIN32
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace tvmeta {

namespace {

struct Registers {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
};

Registers cpuid(unsigned leaf) {
#ifdef _WIN32
    int values[4];
    __cpuidex(values, static_cast<int>(leaf), 0);
    return {static_cast<unsigned>(values[0]), static_cast<unsigned>(values[1]), static_cast<unsigned>(values[2]),
            static_cast<unsigned>(values[3])};
#else
    Registers values;
    __cpuid_count(leaf, 0, values.eax, values.ebx, values.ecx, values.edx);
    return values;
#endif
}

} // namespace

TVMETA_TARGET("xsave") bool hasAvx2() {
    constexpr unsigned Features = 1;
    constexpr unsigned MoreFeatures = 7;
    constexpr unsigned SavesRegisters = 1U << 27; // OSXSAVE, in ecx of Features
    constexpr unsigned Avx2 = 1U << 5;            // in ebx of MoreFeatures
    constexpr unsigned VectorRegisters = 0b110;   // of 16 and of 32 bytes, in register XCR0
    return cpuid(0).eax >= MoreFeatures && (cpuid(Features).ecx & SavesRegisters) != 0 &&
           (_xgetbv(0) & VectorRegisters) == VectorRegisters && (cpuid(MoreFeatures).ebx & Avx2) != 0;
}

} // namespace tvmeta

#endif
