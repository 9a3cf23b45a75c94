#pragma once

// Who and what a car is, and its form on a data stream. A row of its telemetry: sample.h; a lap's header, which names
// its car: lapheader.h; a list of cars: liveplugininfo.h.

#include "orva_export.h"
#include "sdk/carstatus.h"

#include <QtCore/QString>

QT_FORWARD_DECLARE_CLASS(QDataStream)

namespace KOV::SDK {

/// Identity of a car, its status, and whether it delivers detailed telemetry. A plain value.
class ORVA_EXPORT CarInfo
{
public:
    QString carId;
    QString sourceName; ///< the data source; an import plug-in stamps its own on each lap
    QString pluginName; ///< the plug-in that made the data
    QString carName;    ///< importers store the log's vehicle text here
    QString className;  ///< the car's class
    QString driverName;
    QString teamName;
    CarStatus status = CarStatus::NotConnected;
    bool detailedTelemetry = true;
};

/// Writes @p car as one QMap<QString, QVariant>: its nine members under their own names, the status as an int.
///
/// The version and byte order are the stream's own. A Sample goes through here too, without its dynamicData.
ORVA_EXPORT QDataStream &operator<<(QDataStream &stream, const CarInfo &car);

/// Reads what operator<< wrote and overwrites all nine members; the rest of a Sample stays as it was.
///
/// Other keys are ignored, and the later of two equal keys counts. Values go through QVariant's conversions. A member
/// without a value becomes null, false or 0 (CarStatus::NotConnected), whatever it was before. After an error of the
/// stream that holds for all nine, and only the stream's status says so.
///
/// The stream need not be trusted: it may come from a file or another program. Values are read as Qt reads them, except
/// that a time in a time zone, or of an unknown kind, counts as missing. A value whose length cannot be told from the
/// stream (a user's own type, one of QtGui) is an error, ReadCorruptData, and so is nesting of more than 32 lists and
/// maps. What operator<< writes reads back in every version.
ORVA_EXPORT QDataStream &operator>>(QDataStream &stream, CarInfo &car);

} // namespace KOV::SDK
