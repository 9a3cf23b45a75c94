#pragma once

// Cuts the channels of a log, which run through all of it, into laps by the log's own lap counter.

#include "ld/ldfile.h"
#include "orva_export.h"
#include "sdk/lap.h"

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <vector>

/// The minimum number of samples of "lapdistpct" and of "lap" that cutLaps needs.
inline constexpr qint64 ldMinSamples = 5;

/// Cuts @p samples into laps, in log order. All vectors have one sample rate; both maps have the channels' names in
/// lower case as keys, and a name without a record in @p headers has no unit.
///
/// A lap ends where "lap" rises above the number that the lap began with, whole numbers only, and at the last sample of
/// "lapdistpct", which belongs to no lap; that last lap is the one that is not completed. Without five samples of both
/// the result is empty. A fall, a NaN, and the part of "lapdistpct" that a shorter "lap" does not reach cut nothing; a
/// counter beyond 32 bits counts as their nearest bound where a lap begins, so that it cuts at every sample.
///
/// Every lap holds every channel, and all of a lap's channels have one length: one that ends early is filled with
/// invalidValue, one that is longer than "lapdistpct" loses its tail. A record with the name "lapdistpct" and the unit
/// "%" gives fractions with the unit "pu". The start of "lapcurrentlaptime" is repaired by "lapdistpct"
/// (ChannelUtils::normalizeChannelBeginning).
///
/// A completed lap's lapTime is "laplastlaptime" (seconds, rounded to milliseconds, wrapping at midnight) at the first
/// sample from the cut on where "lapcurrentlaptime" has fallen by more than 5 seconds. It stays invalid where no such
/// fall is found before either channel ends, where either is missing, and where the time is not an int of milliseconds.
///
/// What else is in the headers: one stintId and sessionId for all, lapKind 0 on the first lap and 1 on others,
/// stintLapIndex from 0, stintNumber 1. session, venueName and carInfo of the headers are left alone. Re-entrant.
/// Linear in the samples of the laps, which hold 8 bytes for each sample and about 190 for each channel of each lap: a
/// counter that rises at every sample makes a lap of each.
ORVA_EXPORT QList<QSharedPointer<KOV::SDK::Lap>> cutLaps(const QMap<QString, LdChannelHeader> &headers,
                                                         const QMap<QString, std::vector<float>> &samples);
