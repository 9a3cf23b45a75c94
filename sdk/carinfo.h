#pragma once

// Who and what a car is. A row of its telemetry: sample.h; a lap's header, which names its car: lapheader.h.

#include "orva_export.h"
#include "sdk/carstatus.h"

#include <QtCore/QString>

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

} // namespace KOV::SDK
