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
/// Other keys are dropped, and of two equal keys the later counts. Values go through QVariant's conversions. A member
/// without a value becomes null, false or 0 (CarStatus::NotConnected), whatever it was before; at an error of the
/// stream all nine do, and only the stream's status tells.
///
/// Reads Qt Core's plain types, texts, times without a zone and shapes, and lists and maps of these up to 32 deep. Any
/// other type of a value is an error, ReadCorruptData: Qt's readers of some reserve memory for whatever count the
/// stream claims, write where it says, or open files that it names. Of streams from before Qt 4, texts, bool and int
/// alone are read. What operator<< writes reads back in every version.
ORVA_EXPORT QDataStream &operator>>(QDataStream &stream, CarInfo &car);

} // namespace KOV::SDK
