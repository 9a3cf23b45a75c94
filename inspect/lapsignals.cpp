#include "inspect/lapsignals.h"

#include <algorithm>
#include <cmath>

namespace Inspect {

namespace {

constexpr std::size_t maxEvents = 100000;
constexpr std::size_t maxChanges = 10 * maxEvents;
constexpr std::size_t maxKnots = std::size_t{1} << 20;
constexpr double smallestStep = 0.5;  // of counters and beacons, which count in whole numbers
constexpr double restartShare = 0.5;  // a channel that starts again falls below this share of what it had reached
constexpr double positionFall = 0.75; // of a lap, as the import has it
constexpr double latestRestart = 2.0; // s that a timer may start again after the line

} // namespace

void LapEvents::add(const LapEvent &event)
{
    if (isOverflown)
        return;
    events.push_back(event);
    isOverflown = events.size() > maxEvents;
    if (isOverflown)
        events = {};
}

void LapEvents::prolong(double sampleTime)
{
    if (!events.empty())
        events.back().settledTime = sampleTime;
}

void BeaconSignal::add(double time, double value)
{
    if (!std::isfinite(value))
        return;
    // A log that begins within a pulse begins after the line.
    const bool isChange = previous ? std::abs(value - *previous) >= smallestStep : std::abs(value) >= smallestStep;
    if (isChange) {
        if (previous && (!hasChanged || time - lastChange >= shortestLap))
            found.add({time, time, time});
        lastChange = time;
        hasChanged = true;
    }
    previous = value;
}

void CounterSignal::add(double time, double value)
{
    if (!std::isfinite(value))
        return;
    if (previous && value - *previous >= smallestStep) {
        if (!lastRise || time - *lastRise >= shortestLap)
            found.add({time, time, time});
        lastRise = time;
    }
    previous = value;
}

void RestartSignal::add(double time, double value)
{
    if (!std::isfinite(value))
        return;
    if (previous && value < *previous && value < restartShare * reached &&
        (!lastFall || time - *lastFall >= shortestLap)) {
        double line = time;
        if (kind == Kind::Time && value <= latestRestart)
            line = time - value;
        else if (kind == Kind::Distance && slope > 0.0)
            line = std::max(time - value / slope, previousTime);
        found.add({time, std::min(line, time), time});
        lastFall = time;
        reached = value;
    }
    if (previous && value > *previous && time > previousTime)
        slope = (value - *previous) / (time - previousTime);
    reached = previous ? std::max(reached, value) : value;
    previous = value;
    previousTime = time;
}

void PositionSignal::add(double time, double value)
{
    if (!std::isfinite(value))
        return;
    if (previous && *previous - value > positionFall * whole) {
        const double rest = std::max(whole - *previous, 0.0);
        const double begun = std::max(value, 0.0);
        const double share = rest + begun > 0.0 ? rest / (rest + begun) : 1.0;
        if (lastFall && time - *lastFall < shortestLap)
            found.prolong(time);
        else
            found.add({time, previousTime + share * (time - previousTime), time});
        lastFall = time;
    }
    lowest = previous ? std::min(lowest, value) : value;
    highest = previous ? std::max(highest, value) : value;
    previous = value;
    previousTime = time;
}

void HeldValue::add(double time, double value)
{
    if (!std::isfinite(value) || isOverflown)
        return;
    if (!changes.empty() && std::abs(value - changes.back().value) <= tolerance)
        return;
    changes.push_back({time, value});
    isOverflown = changes.size() > maxChanges;
    if (isOverflown)
        changes = {};
}

std::optional<double> HeldValue::at(double time) const
{
    const auto after = std::upper_bound(changes.begin(), changes.end(), time,
                                        [](double wanted, const Change &change) { return wanted < change.time; });
    if (after == changes.begin())
        return std::nullopt;
    return (after - 1)->value;
}

void Odometer::add(double time, double value)
{
    if (!std::isfinite(value))
        return;
    if (knots.empty()) {
        top = value;
        last = {time, 0.0};
        knots.push_back(last);
        return;
    }
    if (time <= last.time)
        return;
    last.time = time;
    if (value > top) {
        last.distance += value - top;
        top = value;
    } else if (value < restartShare * top) {
        last.distance += std::max(value, 0.0);
        top = value;
    } // what lies between is noise, or a car that rolls back
    if (time - knots.back().time < spacing)
        return;
    knots.push_back(last);
    if (knots.size() == maxKnots) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < knots.size(); i += 2)
            knots[kept++] = knots[i];
        knots.resize(kept);
        spacing *= 2.0;
    }
}

double Odometer::at(double time) const
{
    const auto after = std::upper_bound(knots.begin(), knots.end(), time,
                                        [](double wanted, const Knot &knot) { return wanted < knot.time; });
    if (after == knots.begin())
        return 0.0;
    const Knot &from = *(after - 1);
    const Knot to = after == knots.end() ? last : *after;
    if (to.time <= from.time)
        return to.distance;
    const double share = std::min((time - from.time) / (to.time - from.time), 1.0);
    return from.distance + share * (to.distance - from.distance);
}

} // namespace Inspect
