#pragma once

// What one channel says about laps while its samples go by: where it steps, rises or falls, what it holds, how far the
// car has come. All take samples in the order of time, in seconds, and ignore those that are not finite. Memory grows
// with the laps, not with the samples. What follows for the laps: lapplan.h.

#include <cstddef>
#include <optional>
#include <vector>

namespace Inspect {

/// An instant at which a channel says that a lap begins.
struct LapEvent
{
    double sampleTime = 0.0;  ///< of the first sample of the new lap
    double lineTime = 0.0;    ///< when the car crossed the line, as well as the channel shows
    double settledTime = 0.0; ///< of the first sample from which on it has not gone back over the line
};

/// Lap events of one channel in the order of time. A channel that has more of them than any log has laps does not mark
/// laps, and has none.
class LapEvents
{
public:
    void add(const LapEvent &event);
    /// The latest event was not over before @p sampleTime.
    void prolong(double sampleTime);
    const std::vector<LapEvent> &list() const { return events; }

private:
    std::vector<LapEvent> events;
    bool isOverflown = false;
};

/// No lap of a real log is shorter, in seconds. Signals that follow an event sooner belong to it.
inline constexpr double shortestLap = 5.0;

/// A beacon: the first of a group of changes. A step up or down and both sides of a pulse are one event each.
class BeaconSignal
{
public:
    void add(double time, double value);
    const LapEvents &events() const { return found; }

private:
    std::optional<double> previous;
    double lastChange = 0.0;
    bool hasChanged = false;
    LapEvents found;
};

/// A lap counter: each rise.
class CounterSignal
{
public:
    void add(double time, double value);
    const LapEvents &events() const { return found; }

private:
    std::optional<double> previous;
    std::optional<double> lastRise;
    LapEvents found;
};

/// A distance or a time that starts again at the line: each fall to less than half of what it had reached.
class RestartSignal
{
public:
    enum class Kind
    {
        Distance, ///< the line was crossed where the distance would have been 0
        Time      ///< the line was crossed as long ago as the channel says
    };
    explicit RestartSignal(Kind signalKind)
        : kind(signalKind)
    {
    }
    void add(double time, double value);
    const LapEvents &events() const { return found; }

private:
    Kind kind;
    std::optional<double> previous;
    double previousTime = 0.0;
    double slope = 0.0; // per second, at the last rise
    double reached = 0.0;
    std::optional<double> lastFall;
    LapEvents found;
};

/// A position round the lap: each fall by more than the import's three quarters of a lap. A car that rolls back over
/// the line makes several falls of one event.
class PositionSignal
{
public:
    /// @p wholeLap is what the channel reads at the end of a lap.
    explicit PositionSignal(double wholeLap)
        : whole(wholeLap)
    {
    }
    void add(double time, double value);
    const LapEvents &events() const { return found; }
    double minimum() const { return lowest; }
    double maximum() const { return highest; }

private:
    double whole;
    std::optional<double> previous;
    double previousTime = 0.0;
    std::optional<double> lastFall;
    double lowest = 0.0;
    double highest = 0.0;
    LapEvents found;
};

/// A value that stays the same for most of a lap, such as the number of the lap.
class HeldValue
{
public:
    /// Changes up to @p smallestChange do not count.
    explicit HeldValue(double smallestChange)
        : tolerance(smallestChange)
    {
    }
    void add(double time, double value);
    /// The value at @p time; nothing before the first sample, and where there are more changes than laps.
    std::optional<double> at(double time) const;

private:
    struct Change
    {
        double time;
        double value;
    };
    double tolerance;
    std::vector<Change> changes;
    bool isOverflown = false;
};

/// The way of the car, from a distance that runs on or starts again at the line.
class Odometer
{
public:
    void add(double time, double value);
    /// The distance covered from the first sample to @p time, which never falls.
    double at(double time) const;
    bool isEmpty() const { return knots.empty(); }

private:
    struct Knot
    {
        double time;
        double distance;
    };
    std::vector<Knot> knots; // every tenth of a second, between which the way is taken as straight
    double spacing = 0.1;
    double top = 0.0;
    Knot last{};
};

} // namespace Inspect
