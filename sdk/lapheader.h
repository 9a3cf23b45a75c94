#pragma once

// Everything a lap says about itself apart from its channels (lap.h).

#include "orva_export.h"
#include "sdk/carinfo.h"
#include "sdk/dynamicdata.h"
#include "sdk/session.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QUuid>

namespace KOV::SDK {

/// What a text import gives to a lap that has no time of its own.
inline QTime placeholderLapTime()
{
    return QTime(0, 59, 59);
}

inline constexpr qint32 outLapKind = 0;   ///< lapKind of a stint's first lap: it starts in the pits or in mid-lap
inline constexpr qint32 laterLapKind = 1; ///< lapKind of all other laps

/// A lap's descriptive data; a plain value, read and written directly through Lap::header().
class ORVA_EXPORT LapHeader
{
public:
    DynamicData dynamicData; ///< free-form values; a text import puts its sidecar's setup values here
    CarInfo carInfo;
    QDateTime dateTime; ///< no importer of this library knows it
    QString textA;      ///< at the host's disposal
    /// Whole milliseconds counted from 00:00:00.000; invalid where it is not known. A text import gives
    /// placeholderLapTime() to the unfinished lap, and to every lap without a usable time where the log has
    /// "Lap Last Lap Time".
    QTime lapTime;
    QString venueName; ///< the track
    QString textB;     ///< at the host's disposal
    QUuid lapId;
    QUuid stintId;            ///< the same on all laps of a stint
    QUuid sessionId;          ///< the same on all laps of an import
    qint32 lapNumber = 0;     ///< as the log counts
    qint32 stintLapIndex = 0; ///< place in the stint, from 0
    qint32 stintNumber = 0;   ///< from 1 on; 0 on a header that no importer has touched
    Session session = Session::UnknownSession;
    qint32 lapKind = -1;    ///< outLapKind, laterLapKind, or -1 where it is not set
    bool completed = false; ///< the lap ran into the next one; false for the rest at the end of a log
};

} // namespace KOV::SDK
