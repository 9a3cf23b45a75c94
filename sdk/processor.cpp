#include "sdk/processor.h"

#ifdef ORVA_AVX2
#include <cpuid.h>
#endif

namespace KOV::SDK {

#ifdef ORVA_AVX2

namespace {

// Bits of CPUID and of the XCR0 register: "Intel 64 and IA-32 Architectures Software Developer's Manual", volume 1, 14.
// (__builtin_cpu_supports would bring a static initialiser.)
bool detectAvx2()
{
    constexpr unsigned wanted = bit_FMA | bit_POPCNT | bit_OSXSAVE | bit_AVX;
    constexpr unsigned alsoWanted = bit_AVX2 | bit_BMI;
    constexpr unsigned stateSavedBySystem = 0x6; // XMM and YMM registers
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & wanted) != wanted)
        return false;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0 || (ebx & alsoWanted) != alsoWanted)
        return false;
    __asm__("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
    return (eax & stateSavedBySystem) == stateSavedBySystem;
}

} // namespace

#endif

bool runsAvx2()
{
#ifdef ORVA_AVX2
    static const bool runs = detectAvx2();
    return runs;
#else
    return false;
#endif
}

} // namespace KOV::SDK
