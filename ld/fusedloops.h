#pragma once

// Internal: the arithmetic of reading and resampling a channel, block by block. Both need a fused multiply-add, which
// is an instruction on processors that have one and a library call for each sample elsewhere.

#include <QtCore/qglobal.h>

#include <span>

/// The terms of a channel's conversion, widened to what they are used in.
struct LdConversion
{
    float scale;
    double power; ///< 10 to the power of minus decimals
    double shift;
    double multiplier;
};

/// One way of running the loops. All ways give the same bits.
struct FusedLoops
{
    /// Turns raw values into engineering values, in place.
    void (*convert)(std::span<float> samples, const LdConversion &conversion);
    /// Writes samples @p first and on of @p input resampled by @p ratio into @p output. The input is not empty.
    void (*interpolate)(std::span<const float> input, float ratio, qint64 first, std::span<float> output);
};

/// The way that every processor can go.
FusedLoops plainLoops();
/// The fastest way that this processor can go.
FusedLoops bestLoops();
