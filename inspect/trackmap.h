#pragma once

// The line that a car drove, seen from above.

#include "inspect/lapgrid.h"
#include "sdk/channel.h"
#include "sdk/lap.h"

#include <QtCore/QSharedPointer>

#include <optional>
#include <vector>

namespace Inspect {

/// Position channels in two directions, in a unit of length or, of a GPS, in degrees.
struct PositionChannels
{
    QSharedPointer<const KOV::SDK::Channel> east;
    QSharedPointer<const KOV::SDK::Channel> north;
    bool isGeographic = false; ///< longitude and latitude
};

/// The positions of @p lap: of up to three axes X, Y and Z the two with the larger extent, or else a GPS.
std::optional<PositionChannels> findPositions(const KOV::SDK::Lap &lap);

struct TrackPoint
{
    double east;  ///< m, or the channels' own unit where it is not known
    double north; ///< likewise
};

/// Where the car was at @p count evenly spaced places of @p course; both numbers are NaN where that is not known.
///
/// Geographic positions are brought to a plane that touches the earth at their middle latitude, which is good to a
/// thousandth for a circuit of some kilometres. Latitude 0 with longitude 0 means a GPS without a fix, and counts as no
/// value. @p count is at least 2.
std::vector<TrackPoint> trackOnGrid(const LapCourse &course, const PositionChannels &positions, int count);

} // namespace Inspect
