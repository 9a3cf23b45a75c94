#pragma once

// The circuits that the simulated car laps: shape, and the speed that a car can carry at each point.

#include <QtCore/QByteArray>

#include <vector>

namespace samples {

/// A closed circuit, sampled about every metre; node i is i * step metres after the line.
struct Track
{
    QByteArray name;
    double length = 0.0;           // m
    double step = 0.0;             // m between two nodes
    std::vector<double> curvature; // 1/m, positive to the right
    std::vector<double> speed;     // m/s, the fastest that grip, engine and brakes allow
    std::vector<double> east;      // m from the line
    std::vector<double> north;     // m from the line

    /// A kilometre of eight corners, about forty seconds a lap.
    static Track club();
    /// A short bean of a kart circuit, about twelve seconds a lap, for logs that must stay small.
    static Track kart();
};

} // namespace samples
