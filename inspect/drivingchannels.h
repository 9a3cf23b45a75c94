#pragma once

// The channels that laps come from: how the import knows them, in text exports and in .ld logs, and under which other
// names real logs carry the same. Everything that looks for laps in a log uses this table. For people:
// docs/channels.md.

#include "csv/csvtext.h"

#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QStringView>

#include <span>

namespace Inspect {

using Csv::valueName; // the name of the channel that the import makes of a column

/// What a channel says about laps.
enum class LapRole
{
    Position,       ///< position round the lap
    LapNumber,      ///< number of the lap, or count of finished laps
    CurrentLapTime, ///< running time within the lap
    LastLapTime,    ///< time of the lap before
    LapDistance,    ///< distance within the lap, in m
    LogDistance,    ///< distance from the start of the log, in m
    Beacon,         ///< a step or a pulse at the line
    Time            ///< time from the start of the log
};

/// One of the four channels that drive the import.
struct DrivingChannel
{
    LapRole role;
    QLatin1String title;         ///< column title in a text export
    QLatin1String binaryName;    ///< channel name in a .ld log, in any case
    QLatin1String unit;          ///< in a text export
    QLatin1String binaryUnit;    ///< in a .ld log
    QLatin1String use;           ///< what the import does with it
    QLatin1String textAbsence;   ///< what its absence costs a text export, in words that follow "without it"
    QLatin1String binaryAbsence; ///< and a .ld log
};

/// The four, the one that cuts laps first. Lap number in a text export and in a .ld log differ in their weight: there
/// it is copied, here it cuts.
std::span<const DrivingChannel> drivingChannels();
const DrivingChannel &drivingChannel(LapRole role); ///< of one of the first four roles

/// Another name under which real logs carry what a role asks for.
struct OtherName
{
    QLatin1String name;
    LapRole role;
    QLatin1String unit; ///< as logs usually have it; empty where the channel has none
    double scale;       ///< from the channel's own unit to that of the driving channel, or 1
};

/// All of them; where a log has several names of one role, the earlier in the table is the better.
std::span<const OtherName> otherNames();

/// The entry for a channel called @p name, or null. Case, blanks, minus signs and underscores do not count.
const OtherName *otherName(QStringView name);

/// The driving channel that the import sees in a text export's column titled @p title, or null. Case, blanks and minus
/// signs do not count.
const DrivingChannel *drivingChannelOfTitle(QStringView title);
/// The driving channel that the import sees in a .ld log's record called @p name, or null. Case does not count.
const DrivingChannel *drivingChannelOfRecord(QStringView name);

} // namespace Inspect
