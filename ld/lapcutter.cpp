#include "ld/lapcutter.h"

#include "ld/lapbuilder.h"

using Ld::SampleView;
namespace LapChannels = KOV::SDK::LapChannels;

QList<QSharedPointer<KOV::SDK::Lap>> cutLaps(const QMap<QString, LdChannelHeader> &headers,
                                             const QMap<QString, std::vector<float>> &samples)
{
    const auto channel = [&samples](QLatin1String name) {
        const auto entry = samples.constFind(name);
        return entry != samples.cend() ? SampleView(*entry) : SampleView();
    };
    const SampleView distance = channel(LapChannels::distance);
    const SampleView counter = channel(LapChannels::counter);
    if (distance.size() < ldMinSamples || counter.size() < ldMinSamples)
        return {};

    Ld::LapBuilder builder(Ld::lapPieces(distance.size(), counter));
    builder.addChannel(LapChannels::distance, headers.value(LapChannels::distance), distance);
    for (auto entry = samples.cbegin(); entry != samples.cend(); ++entry) {
        if (entry.key() != LapChannels::distance)
            builder.addChannel(entry.key(), headers.value(entry.key()), SampleView(entry.value()));
    }
    builder.setLapTimes(channel(LapChannels::currentTime), channel(LapChannels::lastTime));
    return builder.takeLaps();
}
