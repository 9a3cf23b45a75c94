#include "inspect/lapcounter.h"

#include <algorithm>
#include <cmath>

namespace Inspect {

namespace {

constexpr double minTimerFall = 5.0; // seconds
constexpr double half = 0.5;
constexpr std::size_t maxFalls = 1 << 16; // more are noise

} // namespace

void LapCounter::add(double value)
{
    if (std::isnan(value))
        return;
    if (hasValue) {
        switch (role) {
        case LapRole::Position:
        case LapRole::LapDistance:
            // How much a lap measures is known at the end alone.
            if (last - value > half * largest && falls.size() < maxFalls)
                falls.push_back(last - value);
            break;
        case LapRole::CurrentLapTime:
            crossings += last - value > minTimerFall ? 1 : 0;
            break;
        case LapRole::LapNumber:
            crossings += std::floor(value) > std::floor(last) ? 1 : 0;
            break;
        case LapRole::Beacon:
            crossings += value > last ? 1 : 0;
            break;
        case LapRole::LastLapTime:
        case LapRole::LogDistance:
        case LapRole::Time:
            break;
        }
    }
    hasValue = true;
    last = value;
    largest = std::max(largest, value);
}

qint64 LapCounter::laps() const
{
    switch (role) {
    case LapRole::LastLapTime:
    case LapRole::LogDistance:
    case LapRole::Time:
        return 0;
    default:
        return 1 + crossings +
               std::count_if(falls.begin(), falls.end(), [this](double fall) { return fall > half * largest; });
    }
}

} // namespace Inspect
