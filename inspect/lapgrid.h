#pragma once

// Laps on one grid, so that they can be laid over each other: where and when each sample was taken (LapCourse), the
// values of a channel at evenly spaced places, and the time that one lap loses to another on the way.

#include "sdk/channel.h"
#include "sdk/lap.h"

#include <optional>
#include <span>
#include <vector>

namespace Inspect {

/// What the samples of a lap are laid along.
enum class LapAxis
{
    LapDistance, ///< a channel that says how far round the lap the car is
    Distance,    ///< the distance driven since the lap began
    Time         ///< the time since the lap began
};

/// A lap and what is known about its time.
struct TimedLap
{
    const KOV::SDK::Lap *lap = nullptr;
    std::optional<int> timeMs; ///< the lap time
    bool isCompleted = false;  ///< it ran into the next lap
};

/// Where and when the samples of a lap were taken. Places are shares of the axis: 0 is the line where the lap begins,
/// 1 the line where it ends.
struct LapCourse
{
    struct Point
    {
        double place;
        double seconds; ///< since the line; 0 in a course without times
        long long sample;
    };
    std::vector<Point> points; ///< at least two, strictly ascending in place and ascending in sample
    double widestStep = 0.0;   ///< between two points; what lies further apart is a gap
    bool hasTimes = false;
    std::optional<double> endSeconds; ///< when the lap reached the line at its end
    bool beginsAtLine = false;        ///< for hasTimes: 0 seconds at place 0
};

/// The axis that all of @p laps have a channel for; without any, Time. Laps with fewer than two samples do not count.
LapAxis commonAxis(std::span<const TimedLap> laps);

/// The length of a lap in metres, or for LapAxis::Time in seconds. 0 where the log does not say.
///
/// For LapDistance it is measured by a distance channel, or else by speed and time. For Distance and Time it is all
/// that was driven in the lap.
double axisLength(const TimedLap &lap, LapAxis axis);

/// The course of @p lap, or none where it has fewer than two usable samples.
///
/// @p length divides the distance or the time of an unfinished lap; it is that of another, completed lap, or of the
/// longest one. LapDistance does not need it.
///
/// Samples at which the car stops or goes backwards are left out, and so is what belongs to the laps before and after.
/// Times come from the log's clock with its rounding taken out. They are anchored at the line: the time at place 1 is
/// the lap time, and the time at place 0 is 0. There are none (hasTimes) where clock and lap time contradict each
/// other, where the lap touches neither line, and for LapAxis::Time.
std::optional<LapCourse> courseOf(const TimedLap &lap, LapAxis axis, double length);

/// How values arise between two samples.
enum class Between
{
    Linear,
    Stepped ///< the earlier sample stays, rounded to a whole number
};

/// The values of @p channel, one of the course's lap, at @p count evenly spaced places from 0 to 1.
///
/// NaN where there is no value: next to an invalid or infinite sample, in a gap of the course, and beyond its ends by
/// more than a sample or two. @p count is at least 2.
std::vector<double> valuesOnGrid(const LapCourse &course, const KOV::SDK::Channel &channel, int count, Between between);

/// The seconds since the line at the places of the same grid; NaN where they are not known.
std::vector<double> secondsOnGrid(const LapCourse &course, int count);

/// How much later each place is reached than in @p reference. NaN where either is.
std::vector<double> differences(std::span<const double> seconds, std::span<const double> reference);

} // namespace Inspect
