#include "ld/fusedloops.h"

#include "sdk/processor.h"

#include <algorithm>
#include <cmath>

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

#ifdef ORVA_AVX2

ORVA_AVX2 void convertFused(std::span<float> samples, const Conversion &conversion)
{
    convertLoop(samples, conversion);
}

ORVA_AVX2 void interpolateFused(std::span<const float> input, float ratio, qint64 first, std::span<float> output)
{
    interpolateAny(input, ratio, first, output);
}

#endif

} // namespace

FusedLoops plainLoops()
{
    return {convertPlain, interpolatePlain};
}

FusedLoops bestLoops()
{
#ifdef ORVA_AVX2
    if (KOV::SDK::runsAvx2())
        return {convertFused, interpolateFused};
#endif
    return plainLoops();
}

} // namespace Ld
