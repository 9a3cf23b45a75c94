#pragma once

// Chance that is the same on every machine and compiler: a hash of whole numbers, brought to a range by plain
// arithmetic. The standard library's distributions are not used, since each library has its own.

#include <QtCore/QtGlobal>

namespace samples {

/// The last step of the generator "splitmix64" (Steele, Lea, Flood 2014): every bit of @p x reaches every bit of the
/// result.
constexpr quint64 mixBits(quint64 x)
{
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9u;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebu;
    return x ^ (x >> 31);
}

constexpr quint64 goldenStep = 0x9e3779b97f4a7c15u;

/// A source of chance of its own for each @p stream of one @p seed.
constexpr quint64 chanceKey(quint64 seed, quint64 stream)
{
    return mixBits(mixBits(seed + goldenStep) + goldenStep * stream);
}

/// The number at place @p index of the source @p key, from 0 up to but without 1.
constexpr double chance(quint64 key, quint64 index)
{
    return static_cast<double>(mixBits(key + goldenStep * index) >> 11) * 0x1p-53;
}

/// A curve from -1 to 1 through random points at whole values of @p phase (not negative), straight in between.
inline double smoothNoise(quint64 key, double phase)
{
    const auto point = static_cast<quint64>(phase);
    const double from = chance(key, point);
    const double to = chance(key, point + 1);
    return 2.0 * (from + (to - from) * (phase - static_cast<double>(point))) - 1.0;
}

} // namespace samples
