#include "ld/resample.h"

#include "ld/sampleview.h"

#include <cmath>
#include <cstddef>
#include <limits>

qint64 resampledLength(qint64 length, int sampleRate, int wantedRate)
{
    constexpr auto maxLength = static_cast<float>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(float);
    if (sampleRate <= 0 || wantedRate <= 0)
        return 0;
    const float ratio = static_cast<float>(wantedRate) / static_cast<float>(sampleRate);
    const float wanted = std::ceil(ratio * static_cast<float>(length));
    return wanted < maxLength ? static_cast<qint64>(wanted) : 0;
}

std::vector<float> resample(const std::vector<float> &samples, int sampleRate, int wantedRate)
{
    const Ld::SampleView view(samples, sampleRate, wantedRate);
    std::vector<float> resampled;
    resampled.reserve(static_cast<std::size_t>(view.size()));
    view.visit(0, view.size(), [&resampled](std::span<const float> piece) {
        resampled.insert(resampled.end(), piece.begin(), piece.end());
    });
    return resampled;
}
