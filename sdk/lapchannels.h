#pragma once

// The channels that importers cut and time laps by. Names are in the form that laps hold them in.

#include <QtCore/QLatin1String>

namespace KOV::SDK::LapChannels {

inline constexpr QLatin1String distance("lapdistpct");           ///< position round the lap
inline constexpr QLatin1String counter("lap");                   ///< the lap's number, in binary logs
inline constexpr QLatin1String number("lapnumber");              ///< the lap's number, in text exports
inline constexpr QLatin1String currentTime("lapcurrentlaptime"); ///< running time within the lap, in seconds
inline constexpr QLatin1String lastTime("laplastlaptime");       ///< time of the lap before, in seconds

/// In a lap the distance is a fraction of it.
inline constexpr QLatin1String distanceUnit("pu");
/// What a distance in percent is multiplied by. A division by 100 would give other last bits.
inline constexpr double percent = 0.01;

} // namespace KOV::SDK::LapChannels
