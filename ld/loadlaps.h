#pragma once

// From the path of a .ld log to its laps: what it reads is in ldfile.h, where it cuts in lapcutter.h.

#include "orva_export.h"
#include "sdk/lap.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

/// The rate, in samples per second, to which loadLaps brings all channels.
inline constexpr int ldCommonRate = 60;

/// Reads the laps of the .ld log at @p path, all channels at 60 samples per second, under their names in lower case.
///
/// Each header has the head's session, venue, driver and vehicle. Of several channels with one name the first that has
/// samples is taken. The list is empty where the path is no regular file (a pipe could block and a device never end) or
/// cannot be opened, and where cutLaps finds no laps: why, is to be seen from readLdChannelHeaders and ldSampleCount.
/// The .ldx sidecar is not read. Re-entrant.
///
/// What is decoded is held against ldSampleAllowance of the file, and what the laps take against 1.3 times as many, in
/// samples: for each channel the longer of its own length and that of "lapdistpct", both at 60 per second, and 25 for
/// each lap; for each lap another 100. A record that does not fit into what is left is passed over as though it were
/// empty, which shows in its name's absence from the laps. The channels that drive the cutting come
/// first, then the others in list order; where the laps alone do not fit, the list is empty. Besides the laps no more
/// is held at a time than two channels of the log.
ORVA_EXPORT QList<QSharedPointer<KOV::SDK::Lap>> loadLaps(const QString &path);
