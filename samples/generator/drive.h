#pragma once

// A car that laps a circuit: out lap, flying laps, and one that the log's end cuts off. Every export of the same
// settings shows the same drive, whatever its format and rate.

#include "track.h"

#include <QtCore/QtGlobal>

#include <vector>

namespace samples {

struct DriveSettings
{
    quint64 seed = 1;
    Track track;
    int laps = 5;               // full laps after the out lap
    double startFraction = 0.0; // of a lap: where the log begins, at walking pace
    double endFraction = 0.4;   // of the lap after the last full one
};

/// What the car does at one instant. SI units.
struct CarState
{
    double time = 0.0;        // since the log's start
    int lap = 0;              // 0 is the out lap
    double lapFraction = 0.0; // 0 to 1
    double odometer = 0.0;    // the integral of the speed
    double speed = 0.0;
    double acceleration = 0.0; // along the track
    double curvature = 0.0;    // positive to the right
    double east = 0.0;
    double north = 0.0;
    double lapTimer = 0.0;    // what the logger's lap timer shows, with its faults
    double lastLapTime = 0.0; // what the logger holds as the time of the lap before; 0 as long as there is none
};

/// The drive, asked sample by sample. Going forward is cheap, going back starts again from the first lap; memory does
/// not grow with the length of the drive.
///
/// The lap timer has two faults that loggers have. It goes on counting for some samples after the line, and in every
/// other lap it then stays at zero for a while before it runs. The time of the finished lap appears when the timer
/// falls, so it too is some samples late.
///
/// Lap times lie 0.3 ms above a whole millisecond, so that a reader that drops the fraction and one that rounds get the
/// same.
class Drive
{
public:
    explicit Drive(const DriveSettings &driveSettings);

    /// How many samples a log of @p rate per second holds.
    [[nodiscard]] qint64 sampleCount(int rate) const;
    /// Lets the drive last for @p count samples of @p rate instead of a number of laps.
    void setSampleCount(qint64 count, int rate);
    /// When the car crosses the line, in seconds from the log's start.
    [[nodiscard]] std::vector<double> lineCrossings();
    /// The car at the instant of sample @p index; valid until the next call.
    const CarState &at(qint64 index, int rate);

private:
    void restart();
    void planLap();
    void nextLap();

    DriveSettings settings;
    qint64 endTicks = 0;
    double startWay = 0.0; // m from the line to where the log begins
    quint64 paceKey = 0;
    quint64 faultKey = 0;

    // The lap in hand. Node i is reached times[i] seconds after the lap's start with speeds[i].
    qint64 lapStartTicks = 0;
    qint64 lapTicks = 0;
    qint64 lastLapTicks = 0;
    qint64 lastButOneTicks = 0;
    double resetDelay = 0.0;
    double zeroUntil = 0.0;
    size_t firstNode = 0;
    size_t node = 0;
    std::vector<double> times;
    std::vector<double> speeds;
    CarState state;
};

} // namespace samples
