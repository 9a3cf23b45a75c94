#pragma once

// One row of telemetry, as Lap::addSample (lap.h) takes it.

#include "orva_export.h"
#include "sdk/carinfo.h"
#include "sdk/dynamicdata.h"

#include <QtCore/QMetaType>

namespace KOV::SDK {

/// One instant of one car: who it is, and named values. It has no time stamp: the order of rows is the only time.
class ORVA_EXPORT Sample : public CarInfo
{
public:
    DynamicData dynamicData;
};

} // namespace KOV::SDK

Q_DECLARE_METATYPE(KOV::SDK::Sample)
