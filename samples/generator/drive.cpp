// How the simulated laps come about: the circuit's speed profile, times a pace that wanders from corner to corner.

#include "drive.h"

#include "noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr qint64 ticksPerSecond = 10000; // laps begin at whole ticks, so that every rate cuts them at the same instant
constexpr qint64 ticksPerMillisecond = 10;
constexpr qint64 ticksAboveMillisecond = 3;

constexpr int paceNodes = 16;            // points a lap between which the pace changes evenly
constexpr double paceSpread = 0.05;      // of the speed, between the driver's best and worst
constexpr double outLapPace = 0.85;      // where the out lap begins; it ends at full pace
constexpr double pitSpeed = 3.0;         // m/s
constexpr double pitAcceleration = 3.5;  // m/s²
constexpr double fullAcceleration = 6.5; // m/s²

constexpr double shortestDelay = 0.05; // s after the line until the timer falls
constexpr double delaySpread = 0.08;
constexpr double zeroStretch = 0.12; // s for which the timer stays at zero

enum Stream : quint64
{
    PaceStream = 1,
    FaultStream = 2
};

double seconds(qint64 ticks)
{
    return static_cast<double>(ticks) / static_cast<double>(ticksPerSecond);
}

} // namespace

Drive::Drive(const DriveSettings &driveSettings)
    : settings(driveSettings)
    , paceKey(chanceKey(settings.seed, PaceStream))
    , faultKey(chanceKey(settings.seed, FaultStream))
{
    restart();
    startWay = static_cast<double>(firstNode) * settings.track.step;
    for (int lap = 0; lap <= settings.laps; ++lap)
        nextLap();
    const auto last = static_cast<size_t>(settings.endFraction * static_cast<double>(settings.track.speed.size()));
    endTicks = lapStartTicks + static_cast<qint64>(times[last] * static_cast<double>(ticksPerSecond));
    restart();
}

qint64 Drive::sampleCount(int rate) const
{
    return (endTicks * rate + ticksPerSecond - 1) / ticksPerSecond;
}

void Drive::setSampleCount(qint64 count, int rate)
{
    endTicks = count * ticksPerSecond / rate;
}

std::vector<double> Drive::lineCrossings()
{
    std::vector<double> crossings;
    for (restart(); lapStartTicks + lapTicks < endTicks; nextLap())
        crossings.push_back(seconds(lapStartTicks + lapTicks));
    restart();
    return crossings;
}

void Drive::restart()
{
    state = {};
    lapStartTicks = 0;
    lastLapTicks = 0;
    lastButOneTicks = 0;
    planLap();
}

void Drive::nextLap()
{
    lapStartTicks += lapTicks;
    lastButOneTicks = lastLapTicks;
    lastLapTicks = lapTicks;
    ++state.lap;
    planLap();
}

void Drive::planLap()
{
    const Track &track = settings.track;
    const size_t count = track.speed.size();
    const bool isOutLap = state.lap == 0;
    firstNode = isOutLap ? static_cast<size_t>(settings.startFraction * static_cast<double>(count)) : 0;
    node = firstNode;
    // The car comes out of the pits slowly, and a log that begins shortly before the line goes on accelerating after
    // it.
    const double entrySpeed = isOutLap ? pitSpeed : speeds.back();
    const double acceleration = isOutLap ? pitAcceleration : fullAcceleration;
    times.assign(count + 1, 0.0);
    speeds.assign(count + 1, 0.0);
    for (size_t i = firstNode; i <= count; ++i) {
        const double fraction = static_cast<double>(i) / static_cast<double>(count);
        const double pace = 1.0 + 0.5 * paceSpread * smoothNoise(paceKey, paceNodes * (state.lap + fraction));
        speeds[i] = track.speed[i % count] * pace;
        if (isOutLap)
            speeds[i] *= outLapPace + (1.0 - outLapPace) * fraction;
        const double way = static_cast<double>(i - firstNode) * track.step;
        speeds[i] = std::min(speeds[i], std::sqrt(entrySpeed * entrySpeed + 2.0 * acceleration * way));
        if (i > firstNode)
            times[i] = times[i - 1] + 2.0 * track.step / (speeds[i - 1] + speeds[i]);
    }

    const auto wholeMilliseconds = static_cast<qint64>(times[count] * 1000.0);
    lapTicks = wholeMilliseconds * ticksPerMillisecond + ticksAboveMillisecond;
    const double stretch = seconds(lapTicks) / times[count];
    for (size_t i = firstNode; i <= count; ++i) {
        times[i] *= stretch;
        speeds[i] /= stretch;
    }

    const auto lap = static_cast<quint64>(state.lap);
    resetDelay = isOutLap ? 0.0 : shortestDelay + delaySpread * chance(faultKey, lap);
    zeroUntil = lap % 2 == 1 ? resetDelay + zeroStretch : 0.0;
}

const CarState &Drive::at(qint64 index, int rate)
{
    // Compared in whole numbers: a sample belongs to the same lap whatever the rate at which it is asked for.
    const qint64 instant = index * ticksPerSecond;
    if (instant < lapStartTicks * rate)
        restart();
    while (instant >= (lapStartTicks + lapTicks) * rate)
        nextLap();

    const Track &track = settings.track;
    const double lapTime =
        static_cast<double>(instant - lapStartTicks * rate) / static_cast<double>(ticksPerSecond * rate);
    if (lapTime < times[node])
        node = firstNode;
    const size_t lastNode = track.speed.size() - 1;
    while (node < lastNode && lapTime >= times[node + 1])
        ++node;

    const double duration = times[node + 1] - times[node];
    const double elapsed = lapTime - times[node];
    const double share = std::clamp(elapsed / duration, 0.0, 1.0);
    const auto between = [this, share](const std::vector<double> &values) {
        const double from = values[node];
        return from + (values[(node + 1) % values.size()] - from) * share;
    };
    state.time = static_cast<double>(index) / rate;
    state.acceleration = (speeds[node + 1] - speeds[node]) / duration;
    state.speed = speeds[node] + state.acceleration * elapsed;
    const double way =
        static_cast<double>(node) * track.step + (speeds[node] + 0.5 * state.acceleration * elapsed) * elapsed;
    state.lapFraction = std::min(way / track.length, 1.0);
    state.odometer = state.lap * track.length + way - startWay;
    state.curvature = between(track.curvature);
    state.east = between(track.east);
    state.north = between(track.north);

    const bool isReset = lapTime >= resetDelay;
    state.lastLapTime = seconds(isReset ? lastLapTicks : lastButOneTicks);
    if (!isReset)
        state.lapTimer = seconds(lastLapTicks) + lapTime;
    else
        state.lapTimer = lapTime < zeroUntil ? 0.0 : lapTime;
    return state;
}

} // namespace samples
