#pragma once

// Counts the laps that a channel marks. Which channel plays which role: drivingchannels.h.

#include "inspect/drivingchannels.h"

#include <QtCore/QtGlobal>

#include <vector>

namespace Inspect {

/// Fed with the samples of one channel, oldest first. Positions and distances begin a lap where they fall by more than
/// half of their largest value, running times where they fall by more than 5 s, counters and beacons where they rise.
class LapCounter
{
public:
    explicit LapCounter(LapRole role)
        : role(role)
    {
    }

    /// NaN is passed over.
    void add(double value);
    /// 1 where no line was crossed; 0 for a role that does not mark laps.
    qint64 laps() const;

private:
    LapRole role;
    bool hasValue = false;
    double last = 0.0;
    double largest = 0.0;
    qint64 crossings = 0;
    std::vector<double> falls;
};

} // namespace Inspect
