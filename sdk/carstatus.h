#pragma once

// What a car is doing. The display texts: sdk_utils.h.

#include <QtCore/qglobal.h>

namespace KOV::SDK {

/// Status of a car. The numbers go onto data streams (see carinfo.h), so they never change.
enum class CarStatus : qint32
{
    Undefined = -1,
    NotConnected = 0,
    NotInWorld = 1,
    WaitingForStart = 2,
    InPitStall = 3,
    InPitlane = 4,
    OutLap = 5,
    FlyingLap = 6,
    OnTrack = 7,
    OffTrack = 8
};

} // namespace KOV::SDK
