#pragma once

// Counts the laps that a channel marks, as a rewritten export would have them: lapsignals.h. Which channel plays which
// role: drivingchannels.h.

#include "inspect/drivingchannels.h"
#include "inspect/lapsignals.h"

#include <QtCore/QtGlobal>

#include <variant>

namespace Inspect {

/// Fed with the samples of one channel in the order of time.
class LapCounter
{
public:
    /// Of a channel with this name.
    explicit LapCounter(const OtherName &name);

    /// Whether a channel of this role marks laps at all.
    bool isUseful() const { return !std::holds_alternative<std::monostate>(signal); }
    /// @p time in seconds.
    void add(double time, double value);
    /// 1 where the car never crossed the line.
    qint64 laps() const;

private:
    // A position in percent, or the fraction that some logs hold in its place.
    struct Position
    {
        PositionSignal whole;
        PositionSignal fraction{1.0};
    };

    std::variant<std::monostate, BeaconSignal, CounterSignal, Position, RestartSignal> signal;
};

} // namespace Inspect
