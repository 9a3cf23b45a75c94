#include "ld/fusedloops.h"

#include "sdk/processor.h"

#include <algorithm>
#include <cmath>

#ifdef ORVA_AVX2
#include <immintrin.h>
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
constexpr qint64 shortLimit = 1 << 30;

[[gnu::always_inline]] inline void interpolateAny(std::span<const float> input, float ratio, qint64 first,
                                                  std::span<float> output)
{
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

// Where samples are added, eight outputs in a row lie between a few inputs in a row. One load fetches those; loading
// each by itself takes twice as long.
ORVA_AVX2 void interpolateFused(std::span<const float> input, float ratio, qint64 first, std::span<float> output)
{
    // Vectors of GCC and Clang: operators work on each element, and a comparison is -1 where it holds.
    using Floats = float __attribute__((vector_size(32)));
    using Indices = qint32 __attribute__((vector_size(32)));
    constexpr qint64 width = 8;
    constexpr Indices steps{0, 1, 2, 3, 4, 5, 6, 7};
    const qint64 count = first + std::ssize(output) < shortLimit && ratio > 1.0F ? std::ssize(output) : 0;
    qint64 done = 0;
    for (; done + width <= count; done += width) {
        const Indices outputs = steps + static_cast<qint32>(first + done);
        const Floats position = __builtin_convertvector(outputs, Floats) / ratio;
        const Indices lower = __builtin_convertvector(position, Indices);
        const Floats fraction = position - __builtin_convertvector(lower, Floats);
        const qint64 begin = lower[0];
        if (lower[width - 1] - begin >= width - 1 || begin + width > std::ssize(input))
            break;
        const Floats inputs = reinterpret_cast<Floats>(_mm256_loadu_ps(input.data() + begin));
        const Indices place = lower - lower[0];
        const Indices next = place - (fraction > 0.0F);
        const auto pick = [inputs](Indices places) ORVA_AVX2 {
            return reinterpret_cast<Floats>(
                _mm256_permutevar8x32_ps(reinterpret_cast<__m256>(inputs), reinterpret_cast<__m256i>(places)));
        };
        const Floats upperPart = fraction * pick(next);
        const __m256 result =
            _mm256_fmadd_ps(reinterpret_cast<__m256>(1.0F - fraction), reinterpret_cast<__m256>(pick(place)),
                            reinterpret_cast<__m256>(upperPart));
        _mm256_storeu_ps(output.data() + done, result);
    }
    interpolateAny(input, ratio, first + done, output.subspan(static_cast<std::size_t>(done)));
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
