#pragma once

// From the path of a .ld log to its laps: what it reads is in ldfile.h, where it cuts in lapcutter.h.

#include "orva_export.h"
#include "sdk/lap.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

/// The rate, in samples per second, to which loadLaps brings all channels.
inline constexpr int ldCommonRate = 60;

/// What loadLaps did not deliver, and why. Names are in lower case.
struct LdLoadReport
{
    enum class Obstacle
    {
        None,               ///< there are laps
        CannotOpen,         ///< not a regular file, or it cannot be opened
        NoChannels,         ///< the log has no channel records
        NoReadableChannels, ///< none of its records has samples of a kind that is read
        MissingChannel,     ///< it has no samples of drivingChannel, or these are in leftOut
        ShortChannel,       ///< it has fewer than ldMinSamples of them at the common rate
        TooManyLaps         ///< its lap counter rises more often than the file's size makes plausible
    };

    Obstacle obstacle = Obstacle::None; ///< why there are no laps
    QString drivingChannel;             ///< which of "lap" and "lapdistpct" an obstacle is about
    /// Channels that are in no lap because their declared sample count is implausible for the file's size; sorted.
    QList<QString> leftOut;
};

/// Reads the laps of the .ld log at @p path, all channels at 60 samples per second, under their names in lower case.
///
/// Each header has the head's session, venue, driver and vehicle. Of several channels with one name the first that has
/// samples is taken. The list is empty if the path is not a regular file (a pipe could block and a device never end) or
/// cannot be opened, and if cutLaps finds no laps. The .ldx sidecar is not read. Re-entrant.
///
/// No file takes memory or time out of proportion to its size: a log of up to 1 MiB may take 480 MiB and each further
/// byte 768 bytes more, which is beyond what the samples in the file can come to. What a file declares beyond that is
/// left out, channel by channel; "lapdistpct", "lap" and the timing channels come first, then the others in list order.
/// Besides the laps, two channels of the log at most are in memory, as recorded.
ORVA_EXPORT QList<QSharedPointer<KOV::SDK::Lap>> loadLaps(const QString &path);
/// The same. @p report is filled in, and must not be null.
ORVA_EXPORT QList<QSharedPointer<KOV::SDK::Lap>> loadLaps(const QString &path, LdLoadReport *report);
