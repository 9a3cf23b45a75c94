#include "inspect/drivingchannels.h"

#include "sdk/lapchannels.h"

#include <QtCore/QHash>
#include <QtCore/QString>

#include <algorithm>
#include <array>

namespace Inspect {

namespace {

namespace LapChannels = KOV::SDK::LapChannels;

constexpr std::array<DrivingChannel, 4> driving{{
    {LapRole::Position, QLatin1String("Lap Dist Pct"), LapChannels::distance, QLatin1String("%"), QLatin1String("%"),
     QLatin1String("position round the lap; in a text export its fall cuts the laps"),
     QLatin1String("the import cannot cut laps: the whole export is one"), QLatin1String("the log gives no laps")},
    {LapRole::LapNumber, QLatin1String("Lap Number"), LapChannels::counter, QLatin1String(""), QLatin1String(""),
     QLatin1String("number of the lap; in a .ld log its rise cuts the laps"),
     QLatin1String("all laps have the number 0"), QLatin1String("the log gives no laps")},
    {LapRole::CurrentLapTime, QLatin1String("Lap Current Lap Time"), LapChannels::currentTime, QLatin1String("s"),
     QLatin1String("s"),
     QLatin1String("running time of the lap, repaired at its start; in a .ld log its fall finds the lap time"),
     QLatin1String("laps have no running time"),
     QLatin1String("laps have no running time, and no lap gets its lap time")},
    {LapRole::LastLapTime, QLatin1String("Lap Last Lap Time"), LapChannels::lastTime, QLatin1String("s"),
     QLatin1String("s"), QLatin1String("time of the lap before, from which each lap gets its lap time"),
     QLatin1String("no lap gets its lap time"), QLatin1String("no lap gets its lap time")},
}};

constexpr double percentPerLap = 100.0;

constexpr std::array others{
    OtherName{QLatin1String("Lap Dist Pct"), LapRole::Position, QLatin1String("%"), 1.0},
    OtherName{QLatin1String("Car Pos Norm"), LapRole::Position, QLatin1String(""), percentPerLap},
    OtherName{QLatin1String("Lap Position"), LapRole::Position, QLatin1String("%"), 1.0},
    OtherName{QLatin1String("Lap Number"), LapRole::LapNumber, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Lap"), LapRole::LapNumber, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Session Lap Count"), LapRole::LapNumber, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Lap Count"), LapRole::LapNumber, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Lap Current Lap Time"), LapRole::CurrentLapTime, QLatin1String("s"), 1.0},
    OtherName{QLatin1String("Running Lap Time"), LapRole::CurrentLapTime, QLatin1String("s"), 1.0},
    OtherName{QLatin1String("Lap Time Running"), LapRole::CurrentLapTime, QLatin1String("s"), 1.0},
    OtherName{QLatin1String("Lap Time"), LapRole::CurrentLapTime, QLatin1String("s"), 1.0},
    OtherName{QLatin1String("Lap Last Lap Time"), LapRole::LastLapTime, QLatin1String("s"), 1.0},
    OtherName{QLatin1String("Last Lap Time"), LapRole::LastLapTime, QLatin1String("s"), 1.0},
    OtherName{QLatin1String("Lap Distance"), LapRole::LapDistance, QLatin1String("m"), 1.0},
    OtherName{QLatin1String("Lap Dist"), LapRole::LapDistance, QLatin1String("m"), 1.0},
    OtherName{QLatin1String("Distance"), LapRole::LogDistance, QLatin1String("m"), 1.0},
    OtherName{QLatin1String("Beacon"), LapRole::Beacon, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Lap Beacon"), LapRole::Beacon, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Beacon (Internal)"), LapRole::Beacon, QLatin1String(""), 1.0},
    OtherName{QLatin1String("Time"), LapRole::Time, QLatin1String("s"), 1.0},
};

// Logs differ in these alone: "Lap Beacon", "LAP_BEACON", "lap-beacon".
QString comparable(QStringView name)
{
    return valueName(name).remove(u'_');
}

} // namespace

std::span<const DrivingChannel> drivingChannels()
{
    return driving;
}

const DrivingChannel &drivingChannel(LapRole role)
{
    return driving[static_cast<std::size_t>(role)];
}

std::span<const OtherName> otherNames()
{
    return others;
}

const OtherName *otherName(QStringView name)
{
    static const QHash<QString, const OtherName *> byName = [] { // asked once per channel of each lap
        QHash<QString, const OtherName *> entries;
        for (const OtherName &other : others)
            entries.insert(comparable(QString(other.name)), &other);
        return entries;
    }();
    return byName.value(comparable(name), nullptr);
}

const DrivingChannel *drivingChannelOfTitle(QStringView title)
{
    const QString wanted = valueName(title);
    const auto found = std::find_if(driving.begin(), driving.end(), [&](const DrivingChannel &channel) {
        return valueName(QString(channel.title)) == wanted;
    });
    return found == driving.end() ? nullptr : &*found;
}

const DrivingChannel *drivingChannelOfRecord(QStringView name)
{
    const QString wanted = name.toString().toLower();
    const auto found = std::find_if(driving.begin(), driving.end(),
                                    [&](const DrivingChannel &channel) { return channel.binaryName == wanted; });
    return found == driving.end() ? nullptr : &*found;
}

} // namespace Inspect
