#pragma once

// Internal: loops that are compiled a second time, for processors with wider instructions, and chosen at run time. The
// library is built for every x86-64 processor.

#if defined(__x86_64__) && defined(__GNUC__) // and Clang
/// Before a function: compiles it for processors that runsAvx2() is true on.
#define ORVA_AVX2 __attribute__((target("avx2,bmi,fma,popcnt")))
#endif

namespace KOV::SDK {

/// Whether this processor and the operating system can run functions marked with ORVA_AVX2. Always false where the
/// mark is not defined. Thread-safe.
bool runsAvx2();

} // namespace KOV::SDK
