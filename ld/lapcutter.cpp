#include "ld/lapcutter.h"

#include "ld/lapbuilder.h"

QList<QSharedPointer<KOV::SDK::Lap>> cutLaps(const QMap<QString, LdChannelHeader> &headers,
                                             const QMap<QString, std::vector<float>> &samples)
{
    // By reference and not by value(): a channel may be the size of the log.
    const auto channel = [&samples](QLatin1String name) -> std::span<const float> {
        const auto entry = samples.constFind(name);
        return entry != samples.cend() ? std::span<const float>(*entry) : std::span<const float>();
    };
    const auto distance = channel(LapChannels::distance);
    const auto counter = channel(LapChannels::counter);
    if (!LapBuilder::canCut(std::ssize(distance), std::ssize(counter)))
        return {};

    LapBuilder builder(std::ssize(distance), counter);
    for (auto entry = samples.cbegin(); entry != samples.cend(); ++entry)
        builder.addChannel(entry.key(), headers.value(entry.key()), entry.value());
    builder.setLapTimes(channel(LapChannels::currentTime), channel(LapChannels::lastTime));
    return builder.finish();
}
