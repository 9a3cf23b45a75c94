#pragma once

// Stateless repairs of laps that were cut out of a running log.

#include "orva_export.h"

namespace KOV::SDK {

class Channel;
class Lap;

class ORVA_EXPORT ChannelUtils
{
public:
    /// Straightens a clock that had not restarted, or stood still at zero, at the beginning of its lap.
    ///
    /// Walks @p channel (a running lap time) from its end: a sample above its successor, or within 1e-12 of zero, is
    /// broken and goes onto the straight line through the origin and the first sound sample behind the first broken
    /// one met, with @p reference (the lap distance as a fraction) on the horizontal axis. NaN counts as sound. The
    /// walk ends early where that sound sample is zero. The last sample never changes, nor do size and unit.
    ///
    /// @p reference has at least as many samples as @p channel. A reference of 0 at the sound sample gives an infinity
    /// or a NaN. With fewer than two samples nothing happens. The count is a signed 32-bit one: of a number beyond
    /// 2^31 - 1 only the lowest 32 bits count, so up to 2^32 + 1 samples nothing happens either, and of more only the
    /// first, as many as those bits say, are walked. No allocation.
    static void normalizeChannelBeginning(Channel *channel, const Channel *reference);

    /// Takes off both ends of @p lap the samples that belong to its neighbours.
    ///
    /// @p ramp is one of the lap's recorded channels and a fraction of the lap. Leading samples of it above 0.95, then
    /// trailing ones below 0.05, are counted and dropped from every recorded channel, each channel once however many
    /// names it has; a channel shorter than that becomes empty. A ramp that is trimmed to nothing ends the trimming; a
    /// ramp that the lap does not hold trims nothing. Calculated channels and the header stay. Linear in the samples.
    static void enforceMonotonicRamp(Lap *lap, Channel *ramp);
};

} // namespace KOV::SDK
