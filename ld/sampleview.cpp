#include "ld/sampleview.h"

#include "ld/fusedloops.h"
#include "ld/resample.h"

namespace Ld {

SampleView::SampleView(std::span<const float> samples)
    : input(samples)
    , length(std::ssize(samples))
{
}

SampleView::SampleView(std::span<const float> samples, int sampleRate, int wantedRate)
    : input(samples)
    , ratio(static_cast<float>(wantedRate) / static_cast<float>(sampleRate))
    , length(resampledLength(std::ssize(samples), sampleRate, wantedRate))
{
}

std::span<const float> SampleView::read(qint64 begin, std::span<float> buffer) const
{
    if (ratio == 0.0F)
        return input.subspan(static_cast<std::size_t>(begin), buffer.size());
    bestLoops().interpolate(input, ratio, begin, buffer);
    return buffer;
}

} // namespace Ld
