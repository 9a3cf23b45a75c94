#pragma once

// The cars that a live data source knows at the moment: argument of DataEmitter::sendCarListChanged (dataemitter.h).

#include "orva_export.h"
#include "sdk/carinfo.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace KOV::SDK {

/// A list of cars with two texts at the sender's disposal. A plain value.
class ORVA_EXPORT LivePluginInfo
{
public:
    QList<CarInfo> cars;
    QString streamSecondName; ///< second of the two on a stream, though declared first
    QString streamFirstName;
};

/// Writes streamFirstName, streamSecondName, the number of cars as a signed 32-bit int, and the cars.
ORVA_EXPORT QDataStream &operator<<(QDataStream &stream, const LivePluginInfo &info);

/// Reads what operator<< wrote and replaces all that @p info held.
///
/// A count of 0 or below gives no cars. The count is otherwise not trusted: reading ends at the first error of the
/// stream, with the cars before it, and only the stream's status says so. See operator>> of CarInfo for what is an
/// error. A car occupies at least 4 bytes of the stream and some 180 bytes of memory.
ORVA_EXPORT QDataStream &operator>>(QDataStream &stream, LivePluginInfo &info);

} // namespace KOV::SDK
