#include "ld/fusedloops.h"

#include <algorithm>
#include <cmath>

// The library is built for every x86-64 processor, so the loops are compiled a second time for those with the
// instruction, and one version is chosen at run time. (__builtin_cpu_supports would bring a static initialiser.)
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__FMA__)
#define ORVA_FUSED __attribute__((target("avx2,fma")))
#include <cpuid.h>
#endif

namespace Ld {

namespace {

[[gnu::always_inline]] inline void convertLoop(std::span<float> samples, const Conversion &conversion)
{
    const auto [scale, power, shift, multiplier] = conversion;
    for (float &sample : samples) {
        const float quotient = sample / scale;
        const double shifted = std::fma(static_cast<double>(quotient), power, shift);
        sample = static_cast<float>(shifted * multiplier);
    }
}

// The restriction says that the two do not overlap, without which no compiler gathers several samples at once.
template <typename Index>
[[gnu::always_inline]] inline void interpolateLoop(const float *__restrict in, Index last, float ratio, Index first,
                                                   float *__restrict out, Index count)
{
    for (Index i = 0; i < count; ++i) {
        const float position = static_cast<float>(first + i) / ratio;
        const auto lower = static_cast<Index>(position);
        const float fraction = position - static_cast<float>(lower);
        const Index upper = lower + (fraction > 0.0F ? 1 : 0);
        const float upperPart = fraction * in[std::min(upper, last)];
        out[i] = std::fma(1.0F - fraction, in[std::min(lower, last)], upperPart);
    }
}

// 32-bit indices are what a processor converts several at a time.
[[gnu::always_inline]] inline void interpolateAny(std::span<const float> input, float ratio, qint64 first,
                                                  std::span<float> output)
{
    constexpr qint64 shortLimit = 1 << 30;
    const qint64 last = std::ssize(input) - 1;
    const qint64 count = std::ssize(output);
    if (first + count < shortLimit && last < shortLimit)
        interpolateLoop(input.data(), static_cast<qint32>(last), ratio, static_cast<qint32>(first), output.data(),
                        static_cast<qint32>(count));
    else
        interpolateLoop(input.data(), last, ratio, first, output.data(), count);
}

void convertPlain(std::span<float> samples, const Conversion &conversion)
{
    convertLoop(samples, conversion);
}

void interpolatePlain(std::span<const float> input, float ratio, qint64 first, std::span<float> output)
{
    interpolateAny(input, ratio, first, output);
}

#ifdef ORVA_FUSED

ORVA_FUSED void convertFused(std::span<float> samples, const Conversion &conversion)
{
    convertLoop(samples, conversion);
}

ORVA_FUSED void interpolateFused(std::span<const float> input, float ratio, qint64 first, std::span<float> output)
{
    interpolateAny(input, ratio, first, output);
}

// Bits of CPUID and of the XCR0 register: "Intel 64 and IA-32 Architectures Software Developer's Manual", volume 1, 14.
bool processorHasFma()
{
    constexpr unsigned stateSavedBySystem = 0x6; // XMM and YMM registers
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    constexpr unsigned wanted = bit_FMA | bit_OSXSAVE | bit_AVX;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & wanted) != wanted)
        return false;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0 || (ebx & bit_AVX2) == 0)
        return false;
    __asm__("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
    return (eax & stateSavedBySystem) == stateSavedBySystem;
}

#endif

} // namespace

FusedLoops plainLoops()
{
    return {convertPlain, interpolatePlain};
}

FusedLoops bestLoops()
{
#ifdef ORVA_FUSED
    static const bool hasFma = processorHasFma();
    if (hasFma)
        return {convertFused, interpolateFused};
#endif
    return plainLoops();
}

} // namespace Ld
