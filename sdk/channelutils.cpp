#include "sdk/channelutils.h"

#include "sdk/lap.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>
#include <unordered_set>

namespace KOV::SDK {

namespace {

constexpr double zeroTolerance = 1e-12;
constexpr double upperRampEdge = 0.95;
constexpr double lowerRampEdge = 0.05;

bool isZero(double value)
{
    return std::abs(value) <= zeroTolerance;
}

} // namespace

void ChannelUtils::normalizeChannelBeginning(Channel *channel, const Channel *reference)
{
    const auto count = static_cast<qint32>(channel->size());
    if (count < 2) // or as negative as a size beyond 32 bits can make it
        return;
    double anchorValue = -1.0;
    double anchorReference = -1.0;
    for (qint32 i = count - 2; i >= 0; --i) {
        const double value = channel->value(i);
        const double next = channel->value(i + 1);
        if (!(value > next) && !isZero(value))
            continue;
        // Tested by sign and not by a flag: a negative anchor is replaced at the next broken sample.
        if (anchorValue < 0.0) {
            anchorValue = next;
            anchorReference = reference->value(i + 1);
        }
        if (isZero(anchorValue))
            return;
        channel->setValue(i, anchorValue * reference->value(i) / anchorReference);
    }
}

void ChannelUtils::enforceMonotonicRamp(Lap *lap, Channel *ramp)
{
    std::unordered_set<Channel *> channels;
    for (const QString &name : lap->getAvailableRecordedChannels()) {
        if (Channel *channel = lap->channel(name).get())
            channels.insert(channel);
    }
    if (!channels.contains(ramp))
        return;

    const std::span<const double> samples = ramp->samples();
    const auto first = std::find_if(samples.begin(), samples.end(), [](double v) { return !(v > upperRampEdge); });
    const auto rest = std::make_reverse_iterator(first);
    const auto last = std::find_if(samples.rbegin(), rest, [](double v) { return !(v < lowerRampEdge); });
    const long long leading = first - samples.begin();
    const long long trailing = last - samples.rbegin();
    if (leading == 0 && trailing == 0)
        return;

    for (Channel *channel : channels) {
        channel->popFront(std::min(leading, channel->size()));
        channel->resize(std::max(channel->size() - trailing, 0LL));
        channel->shrinkToFit();
    }
}

} // namespace KOV::SDK
