#include "host/laps.h"

#include "sdk/sdk_utils.h"

#include <QtCore/QSet>

#include <algorithm>

using KOV::SDK::Channel;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;

namespace Host {

bool hasLapTime(QTime time)
{
    const QTime wrapped(23, 0); // a logged time below zero counts back from midnight
    return time.isValid() && time != KOV::SDK::placeholderLapTime() && time != QTime(0, 0) && time < wrapped;
}

std::optional<qsizetype> bestLap(const Laps &laps)
{
    const auto rank = [](const LapHeader &header) { // the smaller the better
        return std::pair(header.lapKind == KOV::SDK::outLapKind, header.lapTime);
    };
    std::optional<qsizetype> best;
    for (qsizetype i = 0; i < laps.size(); ++i) {
        const LapHeader &header = laps[i]->header();
        if (header.completed && hasLapTime(header.lapTime) && (!best || rank(header) < rank(laps[*best]->header())))
            best = i;
    }
    return best;
}

qsizetype usualLap(const Laps &laps)
{
    const auto longest =
        std::max_element(laps.begin(), laps.end(), [](const auto &a, const auto &b) { return a->size() < b->size(); });
    return bestLap(laps).value_or(longest - laps.begin());
}

std::vector<NamedChannel> channelsOf(const Lap &lap)
{
    std::vector<NamedChannel> channels;
    for (const QString &name : lap.getAvailableRecordedChannels())
        channels.push_back({name, lap.channel(name), false});
    for (const QString &name : lap.getAvailableCalculatedChannels())
        channels.push_back({name, lap.calculatedChannel(name), true});
    std::erase_if(channels, [](const NamedChannel &named) { return !named.channel; });
    return channels;
}

QStringList channelNames(const Lap &lap)
{
    QStringList names;
    for (const NamedChannel &named : channelsOf(lap))
        names.append(named.name);
    names.removeDuplicates();
    return names;
}

QSharedPointer<Channel> findChannel(const Lap &lap, const QString &name)
{
    const auto recorded = lap.channel(name);
    return recorded ? recorded : lap.calculatedChannel(name);
}

qsizetype channelCount(const Laps &laps)
{
    QSet<QString> names;
    for (const auto &lap : laps) {
        for (const NamedChannel &named : channelsOf(*lap))
            names.insert(named.name);
    }
    return names.size();
}

ChannelSummary summaryOf(const Channel &channel)
{
    ChannelSummary summary;
    summary.samples = channel.size();
    for (const double sample : channel.samples()) {
        if (!KOV::SDK::isValidValue(sample))
            continue;
        ++summary.validSamples;
        if (summary.range)
            summary.range = Range{std::min(summary.range->minimum, sample), std::max(summary.range->maximum, sample)};
        else
            summary.range = Range{sample, sample};
    }
    return summary;
}

} // namespace Host
