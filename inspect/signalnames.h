#pragma once

// Which channel of a lap is which, and in which unit: real logs call the same signal by many names. The channels that
// mark laps have a table of their own (drivingchannels.h).

#include "inspect/drivingchannels.h"
#include "sdk/channel.h"
#include "sdk/lap.h"

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringView>

#include <optional>

namespace Inspect {

/// What people look at first in a lap, and where a GPS says that the car is.
enum class Signal
{
    Speed,
    Throttle,
    Brake,
    Gear,
    Steering,
    Latitude,
    Longitude
};

struct SignalChannel
{
    QString name; ///< in its lap
    QSharedPointer<const KOV::SDK::Channel> channel;
};

/// The recorded channel of @p lap that holds @p signal, the best-known name first; its channel is null where there is
/// none. Case, blanks, minus signs and underscores in names do not count.
SignalChannel findSignal(const KOV::SDK::Lap &lap, Signal signal);
/// The same for what marks laps.
SignalChannel findSignal(const KOV::SDK::Lap &lap, LapRole role);

/// The recorded channel of @p lap that is called @p name, where case, blanks, minus signs and underscores do not count.
SignalChannel findNamed(const KOV::SDK::Lap &lap, QStringView name);

/// What a number in unit @p from is multiplied by to be in unit @p to; none where the units are not known or not of one
/// kind. An empty unit is unknown. Knows what logs have of speed, distance, time, angle, pressure and share.
std::optional<double> unitFactor(QStringView from, QStringView to);

} // namespace Inspect
