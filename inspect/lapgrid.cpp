// A log rounds places and times, and no sample lies exactly at the line. Differences are exact all the same, because
// the clock is made even first (makeEven), the line is found by extrapolation, and the lap time anchors the result
// (setTimes).

#include "inspect/lapgrid.h"

#include "inspect/signalnames.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

using KOV::SDK::Channel;
using KOV::SDK::Lap;

namespace Inspect {

namespace {

constexpr double noValue = std::numeric_limits<double>::quiet_NaN();
constexpr double usualRate = 60.0;     // samples per second, where a log has no clock
constexpr double nearLine = 0.05;      // of a lap: a lap that begins or ends nearer than this does so at the line
constexpr double clockTolerance = 0.1; // by how much of a lap time the clock may differ from it
constexpr double unevenStep = 1.5;     // times the mean step of a clock: more is a gap, or a clock of few digits
constexpr double gapShare = 0.02;      // of a lap: samples that lie further apart have a gap between them ...
constexpr double gapSteps = 5.0;       // ... unless this many times the mean step is more
constexpr double heldSteps = 2.0;      // of the mean: so far the first and last sample reach beyond their places
constexpr std::size_t slopePoints = 6; // by so many points the line is extrapolated

bool isNumber(double value)
{
    return std::abs(value) < KOV::SDK::invalidThreshold; // false for NaN
}

// The channel's values in unit @p unit; a unit that is empty or unknown counts as that one.
std::vector<double> inUnit(const Channel &channel, QStringView unit)
{
    const double factor = unitFactor(channel.unit(), unit).value_or(1.0);
    std::vector<double> values(channel.samples().begin(), channel.samples().end());
    for (double &value : values)
        value = isNumber(value) ? value * factor : noValue;
    return values;
}

// Loggers sample evenly but round the time, and the rounding must not look like time won and lost: times close to a
// straight line are moved onto it. A clock that jumps because rows are missing stays as it is.
void makeEven(std::vector<double> &seconds)
{
    const auto steps = static_cast<double>(seconds.size() - 1);
    const double mean = (seconds.back() - seconds.front()) / steps;
    double largest = 0.0;
    double smallest = mean;
    for (std::size_t i = 1; i < seconds.size(); ++i) {
        largest = std::max(largest, seconds[i] - seconds[i - 1]);
        smallest = std::min(smallest, seconds[i] - seconds[i - 1]);
    }
    const bool isCoarse = smallest <= 0.0; // it stands between two samples
    if (largest > unevenStep * mean && !isCoarse)
        return;
    std::vector<double> even(seconds.size());
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        even[i] = seconds.front() + mean * static_cast<double>(i);
        if (std::abs(even[i] - seconds[i]) > largest)
            return;
    }
    seconds = std::move(even);
}

// The time of each sample in seconds, by the log's clock, the lap's, or by counting.
std::vector<double> sampleSeconds(const Lap &lap)
{
    for (const LapRole role : {LapRole::Time, LapRole::CurrentLapTime}) {
        const auto channel = findSignal(lap, role).channel;
        if (!channel || channel->size() < 2)
            continue;
        std::vector<double> seconds = inUnit(*channel, u"s");
        const bool isComplete = std::all_of(seconds.begin(), seconds.end(), isNumber);
        if (!isComplete || !std::is_sorted(seconds.begin(), seconds.end()) || !(seconds.back() > seconds.front()))
            continue;
        makeEven(seconds);
        return seconds;
    }
    std::vector<double> seconds(static_cast<std::size_t>(lap.size()));
    for (std::size_t i = 0; i < seconds.size(); ++i)
        seconds[i] = static_cast<double>(i) / usualRate;
    return seconds;
}

QSharedPointer<const Channel> distanceChannel(const Lap &lap)
{
    const auto ofLap = findSignal(lap, LapRole::LapDistance).channel;
    return ofLap ? ofLap : findSignal(lap, LapRole::LogDistance).channel;
}

// How far each sample is: as a share of the lap, in metres or in seconds.
std::vector<double> loggedPlaces(const Lap &lap, LapAxis axis)
{
    if (axis == LapAxis::Time)
        return sampleSeconds(lap);
    if (axis == LapAxis::LapDistance) {
        const auto channel = findSignal(lap, LapRole::Position).channel;
        return channel ? inUnit(*channel, u"pu") : std::vector<double>();
    }
    const auto channel = distanceChannel(lap);
    return channel ? inUnit(*channel, u"m") : std::vector<double>();
}

// Of the samples those that bring the lap forward. The lowest place of the first half is where it begins, the highest
// one of the second half is where it ends: what lies outside belongs to its neighbours, whose samples a late lap
// counter leaves here.
std::vector<LapCourse::Point> forwardPoints(const std::vector<double> &places)
{
    const auto lower = [](double a, double b) { return isNumber(a) && (!isNumber(b) || a <= b); };
    const auto middle = places.begin() + static_cast<std::ptrdiff_t>(places.size() / 2);
    auto first = places.begin();
    for (auto place = first; place != middle; ++place) {
        if (lower(*place, *first))
            first = place;
    }
    auto last = middle;
    for (auto place = middle; place != places.end(); ++place) {
        if (isNumber(*place) && (!isNumber(*last) || *place > *last))
            last = place;
    }
    std::vector<LapCourse::Point> points;
    for (auto place = first; place != places.end() && place <= last; ++place) {
        if (isNumber(*place) && (points.empty() || *place > points.back().place))
            points.push_back({*place, 0.0, place - places.begin()});
    }
    return points;
}

double meanStep(const std::vector<LapCourse::Point> &points)
{
    return (points.back().place - points.front().place) / static_cast<double>(points.size() - 1);
}

// The points of a lap with their places as the log has them; distance and time count from the first one.
std::vector<LapCourse::Point> loggedPoints(const Lap &lap, LapAxis axis)
{
    std::vector<LapCourse::Point> points = forwardPoints(loggedPlaces(lap, axis));
    if (points.size() < 2)
        return {};
    if (axis != LapAxis::LapDistance) {
        const double start = points.front().place;
        for (LapCourse::Point &point : points)
            point.place -= start;
    }
    return points;
}

double lengthOf(const std::vector<LapCourse::Point> &points, bool isCompleted)
{
    return points.back().place + (isCompleted ? meanStep(points) : 0.0); // it ends where the next sample would be
}

// When the lap is at @p place, a little beyond one end of its samples.
double extrapolated(const LapCourse::Point &end, const LapCourse::Point &inner, double place)
{
    return end.seconds + (place - end.place) * (end.seconds - inner.seconds) / (end.place - inner.place);
}

void setTimes(LapCourse &course, const TimedLap &lap)
{
    const std::vector<double> seconds = sampleSeconds(*lap.lap);
    if (std::cmp_greater_equal(course.points.back().sample, seconds.size()))
        return;
    for (LapCourse::Point &point : course.points)
        point.seconds = seconds[static_cast<std::size_t>(point.sample)];

    const std::span points(course.points);
    const std::size_t inner = std::min(slopePoints, points.size()) - 1;
    const double near = std::max(nearLine, meanStep(course.points));
    const bool beginsAtLine = points.front().place <= near;
    const bool endsAtLine = lap.isCompleted && points.back().place >= 1.0 - near;
    const double start = extrapolated(points.front(), points[inner], 0.0);
    const double end = extrapolated(points.back(), points[points.size() - 1 - inner], 1.0);
    double shift = -start;
    double stretch = 1.0;
    if (endsAtLine && lap.timeMs) {
        const double lapTime = *lap.timeMs / 1000.0;
        if (beginsAtLine)
            stretch = lapTime / (end - start);
        else
            shift = lapTime - end;
        course.endSeconds = lapTime;
    } else if (endsAtLine) {
        course.endSeconds = end - start;
    }
    course.beginsAtLine = beginsAtLine;
    course.hasTimes = (beginsAtLine || (endsAtLine && lap.timeMs)) && std::abs(stretch - 1.0) <= clockTolerance;
    if (!course.hasTimes)
        course.endSeconds.reset();
    for (LapCourse::Point &point : course.points)
        point.seconds = course.hasTimes ? (point.seconds + shift) * stretch : 0.0;
}

double valueAt(const Channel &channel, long long sample)
{
    return sample < channel.size() ? channel.value(sample) : noValue;
}

// The metres between two samples by a distance channel, or else by speed and time; NaN without either.
double driven(const Lap &lap, const LapCourse::Point &from, const LapCourse::Point &to)
{
    if (const auto distance = distanceChannel(lap)) {
        const double metres = valueAt(*distance, to.sample) - valueAt(*distance, from.sample);
        return metres * unitFactor(distance->unit(), u"m").value_or(1.0);
    }
    const auto channel = findSignal(lap, Signal::Speed).channel;
    const std::vector<double> seconds = sampleSeconds(lap);
    if (!channel || std::cmp_greater_equal(to.sample, std::min<std::size_t>(seconds.size(), channel->samples().size())))
        return noValue;
    const std::vector<double> speeds = inUnit(*channel, u"m/s");
    double metres = 0.0;
    for (auto i = static_cast<std::size_t>(from.sample); i < static_cast<std::size_t>(to.sample); ++i)
        metres += (speeds[i] + speeds[i + 1]) / 2.0 * (seconds[i + 1] - seconds[i]);
    return metres;
}

// Walks along a grid and a course together and calls give(grid index, point before, point after, share of the way
// between them). At the ends of the course, and up to @p held beyond, the two points are the same; in gaps and further
// beyond there is no call.
template <typename Give>
void walk(const LapCourse &course, int count, double held, const Give &give)
{
    const std::vector<LapCourse::Point> &points = course.points;
    std::size_t next = 0; // the first point beyond the place in hand
    for (int i = 0; i < count; ++i) {
        const double place = static_cast<double>(i) / static_cast<double>(count - 1);
        while (next < points.size() && points[next].place <= place)
            ++next;
        if (next == 0) {
            if (points.front().place - place <= held)
                give(i, points.front(), points.front(), 0.0);
        } else if (next == points.size()) {
            if (place - points.back().place <= held)
                give(i, points.back(), points.back(), 0.0);
        } else if (points[next - 1].place == place) {
            give(i, points[next - 1], points[next - 1], 0.0);
        } else {
            const LapCourse::Point &before = points[next - 1];
            const LapCourse::Point &after = points[next];
            if (after.place - before.place <= course.widestStep)
                give(i, before, after, (place - before.place) / (after.place - before.place));
        }
    }
}

std::vector<double> emptyGrid(int count)
{
    return std::vector<double>(static_cast<std::size_t>(count), noValue);
}

} // namespace

LapAxis commonAxis(std::span<const TimedLap> laps)
{
    for (const LapAxis axis : {LapAxis::LapDistance, LapAxis::Distance}) {
        const bool isCommon = std::all_of(laps.begin(), laps.end(), [axis](const TimedLap &lap) {
            return lap.lap->size() < 2 || !loggedPlaces(*lap.lap, axis).empty();
        });
        const bool isUsable = std::any_of(
            laps.begin(), laps.end(), [axis](const TimedLap &lap) { return !loggedPoints(*lap.lap, axis).empty(); });
        if (isCommon && isUsable)
            return axis;
    }
    return LapAxis::Time;
}

double axisLength(const TimedLap &lap, LapAxis axis)
{
    const std::vector<LapCourse::Point> points = loggedPoints(*lap.lap, axis);
    if (points.empty())
        return 0.0;
    if (axis != LapAxis::LapDistance)
        return lengthOf(points, lap.isCompleted);
    const LapCourse::Point &from = points.front();
    const LapCourse::Point &to = points.back();
    const double metres = driven(*lap.lap, from, to) / (to.place - from.place);
    return metres > 0.0 ? metres : 0.0; // not NaN
}

std::optional<LapCourse> courseOf(const TimedLap &lap, LapAxis axis, double length)
{
    LapCourse course;
    course.points = loggedPoints(*lap.lap, axis);
    if (course.points.empty())
        return std::nullopt;
    if (axis != LapAxis::LapDistance) {
        const bool isOwnLength = length <= 0.0 || (lap.isCompleted && axis == LapAxis::Distance);
        const double divisor = isOwnLength ? lengthOf(course.points, lap.isCompleted) : length;
        for (LapCourse::Point &point : course.points)
            point.place /= divisor;
    }
    course.widestStep = std::max(gapShare, gapSteps * meanStep(course.points));
    if (axis != LapAxis::Time)
        setTimes(course, lap);
    return course;
}

std::vector<double> valuesOnGrid(const LapCourse &course, const Channel &channel, int count, Between between)
{
    std::vector<double> values = emptyGrid(count);
    const double held = heldSteps * meanStep(course.points);
    walk(course, count, held, [&](int index, const auto &before, const auto &after, double share) {
        const double from = valueAt(channel, before.sample);
        const double to = between == Between::Stepped ? from : valueAt(channel, after.sample);
        if (isNumber(from) && isNumber(to))
            values[static_cast<std::size_t>(index)] =
                between == Between::Stepped ? std::round(from) : from + (to - from) * share;
    });
    return values;
}

std::vector<double> secondsOnGrid(const LapCourse &course, int count)
{
    std::vector<double> seconds = emptyGrid(count);
    if (!course.hasTimes)
        return seconds;
    // The line belongs to the way where the lap touches it, so that times begin and end there exactly.
    LapCourse anchored = course;
    if (course.beginsAtLine && course.points.front().place > 0.0)
        anchored.points.insert(anchored.points.begin(), {0.0, 0.0, course.points.front().sample});
    if (course.endSeconds && course.points.back().place < 1.0)
        anchored.points.push_back({1.0, *course.endSeconds, course.points.back().sample});
    walk(anchored, count, 0.0, [&](int index, const auto &before, const auto &after, double share) {
        seconds[static_cast<std::size_t>(index)] = before.seconds + (after.seconds - before.seconds) * share;
    });
    return seconds;
}

std::vector<double> differences(std::span<const double> seconds, std::span<const double> reference)
{
    std::vector<double> result(seconds.size());
    std::transform(seconds.begin(), seconds.end(), reference.begin(), result.begin(), std::minus());
    return result;
}

} // namespace Inspect
