#pragma once

// What the logger records of a drive: the channels, each with its name, unit, resolution and value.

#include "drive.h"

#include <QtCore/QByteArray>

#include <vector>

namespace samples {

/// How a channel is stored in a .ld log. A stored number r stands for (r / scale · 10^-decimals + shift) · multiplier,
/// where the decimals are the channel's own.
struct LdForm
{
    quint16 rate = 60; // samples per second
    quint16 width = 2; // bytes a sample
    qint16 shift = 0;
    qint16 multiplier = 1;
    qint16 scale = 1;
};

/// One recorded signal: value(state) and a random part of up to ± swing that wanders with the frequency.
struct Channel
{
    QByteArray name; // as a text export has it
    QByteArray unit;
    int decimals = 0;
    double (*value)(const CarState &) = nullptr;
    double swing = 0.0;
    double frequency = 1.0; // random points per second
    LdForm ld = {};
    quint64 key = 0; // source of its random part

    /// The value in units of the last decimal, not yet rounded.
    [[nodiscard]] double scaledValue(const CarState &state) const;
};

/// To the nearest whole number, halves away from zero.
inline qint64 rounded(double value)
{
    return static_cast<qint64>(value + (value < 0.0 ? -0.5 : 0.5));
}

/// The first @p count channels of the logger: the lap channels, then the car's, then as many auxiliary ones as are
/// needed. With @p count 0 the car's own channels, all of them.
std::vector<Channel> loggerChannels(quint64 seed, int count);

/// Whether @p channel is one of the four that laps come from.
bool isLapChannel(const Channel &channel);

/// With fewer a log lacks one of the channels that its laps come from.
constexpr int minChannels = 10;
constexpr int maxChannels = 2000;

} // namespace samples
