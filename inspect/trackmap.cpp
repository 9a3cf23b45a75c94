#include "inspect/trackmap.h"

#include "inspect/signalnames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

using KOV::SDK::Channel;
using KOV::SDK::Lap;

namespace Inspect {

namespace {

constexpr TrackPoint nowhere{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
constexpr double earthRadius = 6371000.0; // m, mean
constexpr double quarterTurn = 90.0;      // degrees
constexpr double degree = std::numbers::pi / 180.0;

// What comes before the X, Y or Z of position channels.
constexpr std::array axisPrefixes{QLatin1String("Pos "),       QLatin1String("Car Pos "),
                                  QLatin1String("Car Coord "), QLatin1String("World Pos "),
                                  QLatin1String("Position "),  QLatin1String("Car Position ")};

bool isNumber(double value)
{
    return std::abs(value) < KOV::SDK::invalidThreshold; // false for NaN
}

struct Axis
{
    QSharedPointer<const Channel> channel;
    double extent = 0.0; ///< largest less smallest value; in metres, where the unit is one of length
};

Axis axisOf(const QSharedPointer<const Channel> &channel)
{
    Axis axis{channel};
    if (!channel)
        return axis;
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (const double value : channel->samples()) {
        if (isNumber(value)) {
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
        }
    }
    axis.extent = std::max(highest - lowest, 0.0) * unitFactor(channel->unit(), u"m").value_or(1.0);
    return axis;
}

// A point for each sample: in the unit that the channels have, or in metres.
std::vector<TrackPoint> sampledPoints(const PositionChannels &positions)
{
    const auto east = positions.east->samples();
    const auto north = positions.north->samples();
    const QStringView wanted = positions.isGeographic ? u"deg" : u"m";
    const double eastFactor = unitFactor(positions.east->unit(), wanted).value_or(1.0);
    const double northFactor = unitFactor(positions.north->unit(), wanted).value_or(1.0);
    std::vector<TrackPoint> points(std::min(east.size(), north.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool isValid = isNumber(east[i]) && isNumber(north[i]);
        points[i] = isValid ? TrackPoint{east[i] * eastFactor, north[i] * northFactor} : nowhere;
    }
    return points;
}

// From degrees to metres, in place.
void flatten(std::vector<TrackPoint> &points)
{
    double lowest = quarterTurn;
    double highest = -quarterTurn;
    for (TrackPoint &point : points) {
        const bool hasFix = std::abs(point.north) <= quarterTurn && (point.north != 0.0 || point.east != 0.0);
        if (!hasFix) { // or not a number
            point = nowhere;
            continue;
        }
        lowest = std::min(lowest, point.north);
        highest = std::max(highest, point.north);
    }
    const double metresPerDegree = earthRadius * degree;
    const double shrink = std::cos((lowest + highest) / 2.0 * degree); // of a degree of longitude
    for (TrackPoint &point : points)
        point = {point.east * metresPerDegree * shrink, point.north * metresPerDegree};
}

} // namespace

std::optional<PositionChannels> findPositions(const Lap &lap)
{
    for (const QLatin1String prefix : axisPrefixes) {
        std::array<Axis, 3> axes;
        for (std::size_t i = 0; i < axes.size(); ++i)
            axes[i] = axisOf(findNamed(lap, prefix + QString(QChar(u'X' + static_cast<char16_t>(i)))).channel);
        const auto height = std::min_element(axes.rbegin(), axes.rend(), // of equal ones Z
                                             [](const Axis &a, const Axis &b) { return a.extent < b.extent; });
        const Axis &east = &*height == &axes[0] ? axes[1] : axes[0];
        const Axis &north = &*height == &axes[2] ? axes[1] : axes[2];
        if (east.extent > 0.0 && north.extent > 0.0)
            return PositionChannels{east.channel, north.channel, false};
    }
    const Axis longitude = axisOf(findSignal(lap, Signal::Longitude).channel);
    const Axis latitude = axisOf(findSignal(lap, Signal::Latitude).channel);
    if (!(longitude.extent > 0.0 && latitude.extent > 0.0))
        return std::nullopt;
    return PositionChannels{longitude.channel, latitude.channel, true};
}

std::vector<TrackPoint> trackOnGrid(const LapCourse &course, const PositionChannels &positions, int count)
{
    std::vector<TrackPoint> sampled = sampledPoints(positions);
    if (positions.isGeographic)
        flatten(sampled);
    Channel east;
    Channel north;
    for (const TrackPoint &point : sampled) {
        east.append(point.east);
        north.append(point.north);
    }
    const std::vector<double> easts = valuesOnGrid(course, east, count, Between::Linear);
    const std::vector<double> norths = valuesOnGrid(course, north, count, Between::Linear);
    std::vector<TrackPoint> points(easts.size());
    std::transform(easts.begin(), easts.end(), norths.begin(), points.begin(), [](double x, double y) {
        return TrackPoint{x, y};
    });
    return points;
}

} // namespace Inspect
