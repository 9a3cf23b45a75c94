// The circuits and their speed profiles. Only the four basic operations and square roots are used here, which every
// machine rounds alike; sines would differ in their last bit between C libraries.

#include "track.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <utility>

namespace samples {

namespace {

constexpr double gravity = 9.81;           // m/s²
constexpr double lateralGrip = 1.35;       // g
constexpr double braking = 9.0;            // m/s²
constexpr double standingStart = 6.5;      // m/s², acceleration at walking pace
constexpr double topSpeed = 58.0;          // m/s, where the engine has nothing left
constexpr double straightSpeed = 54.0;     // m/s, more is not driven on any straight
constexpr double steeringTransition = 6.0; // m on either side over which a corner opens and closes
constexpr double footTransition = 3.0;     // m on either side over which the driver changes pedals

// A straight of a length in metres, or a corner of a radius in metres and an angle in degrees, positive to the right.
struct Section
{
    double straight;
    double radius;
    double angle;
};

// Mean over the neighbours within reach, round the circuit.
std::vector<double> smoothed(const std::vector<double> &values, double reach, double step)
{
    const auto count = static_cast<qsizetype>(values.size());
    const auto width = static_cast<qsizetype>(reach / step);
    std::vector<double> result(values.size());
    for (qsizetype i = 0; i < count; ++i) {
        double sum = 0.0;
        for (qsizetype j = i - width; j <= i + width; ++j)
            sum += values[static_cast<size_t>((j + count) % count)];
        result[static_cast<size_t>(i)] = sum / static_cast<double>(2 * width + 1);
    }
    return result;
}

std::vector<double> speedProfile(const Track &track)
{
    const size_t count = track.curvature.size();
    std::vector<double> speed(count);
    for (size_t i = 0; i < count; ++i) {
        const double curvature = std::max(std::abs(track.curvature[i]), 1e-6);
        speed[i] = std::min(straightSpeed, std::sqrt(lateralGrip * gravity / curvature));
    }
    // Twice round in each direction, so that the limits reach over the line.
    for (size_t i = 2 * count; i-- > 0;) {
        const double next = speed[(i + 1) % count];
        speed[i % count] = std::min(speed[i % count], std::sqrt(next * next + 2.0 * braking * track.step));
    }
    for (size_t i = 0; i < 2 * count; ++i) {
        const double before = speed[i % count];
        const double acceleration = standingStart * (1.0 - before / topSpeed);
        double &next = speed[(i + 1) % count];
        next = std::min(next, std::sqrt(before * before + 2.0 * acceleration * track.step));
    }
    return smoothed(speed, footTransition, track.step);
}

// Walks the centre line. The end rarely meets the start, so the gap is shared out over the whole lap.
void layOut(Track &track)
{
    const size_t count = track.curvature.size();
    double x = 0.0;
    double y = 0.0;
    double headingX = 0.0;
    double headingY = 1.0;
    for (size_t i = 0; i < count; ++i) {
        track.east.push_back(x);
        track.north.push_back(y);
        const double turn = track.curvature[i] * track.step;
        const double newX = headingX + headingY * turn;
        const double newY = headingY - headingX * turn;
        const double norm = std::sqrt(newX * newX + newY * newY);
        headingX = newX / norm;
        headingY = newY / norm;
        x += headingX * track.step;
        y += headingY * track.step;
    }
    for (size_t i = 0; i < count; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(count);
        track.east[i] -= x * share;
        track.north[i] -= y * share;
    }
}

Track build(QByteArray name, std::initializer_list<Section> sections)
{
    Track track;
    track.name = std::move(name);
    const auto sectionLength = [](const Section &section) {
        return section.straight + section.radius * std::abs(section.angle) * std::numbers::pi / 180.0;
    };
    for (const Section &section : sections)
        track.length += sectionLength(section);
    const auto count = static_cast<size_t>(std::ceil(track.length));
    track.step = track.length / static_cast<double>(count);
    const Section *section = sections.begin();
    double sectionEnd = sectionLength(*section);
    for (size_t node = 0; node < count; ++node) {
        while (static_cast<double>(node) * track.step >= sectionEnd && section + 1 != sections.end())
            sectionEnd += sectionLength(*++section);
        const double radius = section->angle < 0.0 ? -section->radius : section->radius;
        track.curvature.push_back(section->radius > 0.0 ? 1.0 / radius : 0.0);
    }
    track.curvature = smoothed(track.curvature, steeringTransition, track.step);
    track.speed = speedProfile(track);
    layOut(track);
    return track;
}

} // namespace

Track Track::club()
{
    return build("Alder Park", {{150.0, 0.0, 0.0},
                                {0.0, 28.0, 90.0},
                                {85.0, 0.0, 0.0},
                                {0.0, 32.0, -60.0},
                                {60.0, 0.0, 0.0},
                                {0.0, 18.0, 150.0},
                                {130.0, 0.0, 0.0},
                                {0.0, 45.0, -45.0},
                                {80.0, 0.0, 0.0},
                                {0.0, 36.0, 100.0},
                                {130.0, 0.0, 0.0},
                                {0.0, 24.0, 75.0},
                                {40.0, 0.0, 0.0},
                                {0.0, 60.0, 50.0},
                                {70.0, 0.0, 0.0}});
}

Track Track::kart()
{
    return build("Mill Lane Karting", {{24.0, 0.0, 0.0},
                                       {0.0, 11.0, 150.0},
                                       {14.0, 0.0, 0.0},
                                       {0.0, 16.0, -40.0},
                                       {14.0, 0.0, 0.0},
                                       {0.0, 9.0, 170.0},
                                       {22.0, 0.0, 0.0},
                                       {0.0, 30.0, 80.0}});
}

} // namespace samples
