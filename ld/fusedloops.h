#pragma once

// Internal: the arithmetic of reading and resampling a channel, block by block. Both need a fused multiply-add, which
// is an instruction on processors that have one and a library call for each sample elsewhere.

#include <QtCore/qglobal.h>

#include <span>

namespace Ld {

/// The terms of a channel's conversion, widened to what they are used in.
struct Conversion
{
    float scale;
    double power; ///< 10 to the power of minus decimals
    double shift;
    double multiplier;
};

/// One implementation of the loops. All give the same bits.
struct FusedLoops
{
    /// Turns raw values into engineering values, in place.
    void (*convert)(std::span<float> samples, const Conversion &conversion);
    /// Writes samples @p first and on of @p input resampled by @p ratio into @p output. The input is not empty.
    void (*interpolate)(std::span<const float> input, float ratio, qint64 first, std::span<float> output);
};

/// For every processor.
FusedLoops plainLoops();
/// The fastest that this processor can run.
FusedLoops bestLoops();

} // namespace Ld
