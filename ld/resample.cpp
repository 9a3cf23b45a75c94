#include "ld/resample.h"

#include "ld/fusedloops.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

namespace {

constexpr std::size_t blockSamples = 8192; // stays in a processor's first cache

float ratioOf(int sampleRate, int wantedRate)
{
    return static_cast<float>(wantedRate) / static_cast<float>(sampleRate);
}

} // namespace

qint64 resampledLength(qint64 length, int sampleRate, int wantedRate)
{
    constexpr auto longest = static_cast<float>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(float);
    if (sampleRate <= 0 || wantedRate <= 0)
        return 0;
    const float wanted = std::ceil(ratioOf(sampleRate, wantedRate) * static_cast<float>(length));
    return wanted < longest ? static_cast<qint64>(wanted) : 0;
}

std::vector<float> resample(const std::vector<float> &samples, int sampleRate, int wantedRate)
{
    std::vector<float> resampled;
    const auto length = static_cast<std::size_t>(resampledLength(std::ssize(samples), sampleRate, wantedRate));
    if (length == 0)
        return resampled;
    const FusedLoops loops = bestLoops();
    const float ratio = ratioOf(sampleRate, wantedRate);
    resampled.reserve(length);
    while (resampled.size() < length) {
        const std::size_t done = resampled.size();
        resampled.resize(std::min(done + blockSamples, length));
        loops.interpolate(samples, ratio, static_cast<qint64>(done), std::span(resampled).subspan(done));
    }
    return resampled;
}
