#pragma once

// Stateless repairs of laps that were cut out of a running log.

#include "orva_export.h"

namespace KOV::SDK {

class Channel;
class Lap;

class ORVA_EXPORT ChannelUtils
{
public:
    /// Repairs a running lap time that had not restarted, or stood at zero, at the beginning of its lap.
    ///
    /// Walks @p channel (a running lap time) from its end. A sample above its successor, or within 1e-12 of zero, is
    /// broken. It is moved onto the straight line through the origin and the anchor, with @p reference (the lap
    /// distance as a fraction) on the horizontal axis. The anchor is the sample after the first broken one that the
    /// walk meets; a negative anchor is replaced at the next broken sample. NaN counts as sound. The walk ends where
    /// the anchor is within 1e-12 of zero. The last sample, the size and the unit never change.
    ///
    /// @p reference has at least as many samples as @p channel. A reference of 0 at the anchor gives an infinity or a
    /// NaN. The number of samples counts as a signed 32-bit integer: nothing happens where that is below 2, as it is
    /// for 2^31 samples. Allocates nothing.
    static void normalizeChannelBeginning(Channel *channel, const Channel *reference);

    /// Removes from both ends of @p lap the samples that belong to its neighbours.
    ///
    /// @p ramp is one of the lap's recorded channels and a fraction of the lap. Leading samples of it above 0.95, then
    /// trailing ones below 0.05, are counted and dropped from every recorded channel, each channel once however many
    /// names it has; a channel shorter than that becomes empty. A ramp that is trimmed to nothing ends the trimming; a
    /// ramp that the lap does not hold trims nothing. Calculated channels and the header stay. Linear in the samples.
    static void enforceMonotonicRamp(Lap *lap, Channel *ramp);
};

} // namespace KOV::SDK
