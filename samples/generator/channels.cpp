// The logger's channels. Their formulas are simple, but what belongs together goes together: gear follows speed, engine
// speed follows gear, pedals follow acceleration, steering and side force follow the corner.

#include "channels.h"

#include "noise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace samples {

namespace {

constexpr double gravity = 9.81;
constexpr double kilometresPerHour = 3.6;
constexpr std::array<double, 5> upshiftSpeeds = {11.0, 18.0, 26.0, 35.0, 45.0}; // m/s
constexpr double downshiftShare = 0.92; // of the upshift's speed, when slowing down
constexpr double redline = 7800.0;      // rpm at each upshift
constexpr double longestGearSpeed = 58.0;
constexpr double idle = 1100.0;

int gear(const CarState &state)
{
    const double speed = state.acceleration < -1.0 ? state.speed / downshiftShare : state.speed;
    return 1 + static_cast<int>(std::upper_bound(upshiftSpeeds.begin(), upshiftSpeeds.end(), speed) -
                                upshiftSpeeds.begin());
}

double engineSpeed(const CarState &state)
{
    const auto index = static_cast<size_t>(gear(state) - 1);
    const double atRedline = index < upshiftSpeeds.size() ? upshiftSpeeds[index] : longestGearSpeed;
    return std::max(idle, redline * state.speed / atRedline);
}

// The share of the pedal in 0 to 100: what is asked of engine or brakes, air drag included, of what they can give.
double throttle(const CarState &state)
{
    const double asked = state.acceleration + 0.0015 * state.speed * state.speed + 0.2;
    const double limit = std::max(1.5, 6.5 * (1.0 - state.speed / 64.0) + 0.0015 * state.speed * state.speed);
    return std::clamp(100.0 * asked / limit, 0.0, 100.0);
}

double brake(const CarState &state)
{
    const double asked = -state.acceleration - 0.0015 * state.speed * state.speed - 0.5;
    return std::clamp(100.0 * asked / 9.5, 0.0, 100.0);
}

double lateralForce(const CarState &state)
{
    return state.speed * state.speed * state.curvature / gravity;
}

// Warms from a start value towards an end value; half of it is done after halfWay metres.
double warmed(double from, double to, double halfWay, const CarState &state)
{
    return from + (to - from) * state.odometer / (state.odometer + halfWay);
}

double wheelSpeed(const CarState &state, double side)
{
    return kilometresPerHour * state.speed * (1.0 - side * 0.6 * state.curvature);
}

double suspension(const CarState &state, double side, double end)
{
    return 25.0 + 8.0 * side * lateralForce(state) - 1.1 * end * state.acceleration;
}

constexpr double originLatitude = 52.071; // degrees; open fields
constexpr double originLongitude = -1.016;
constexpr double metresPerLatitude = 111200.0;
constexpr double metresPerLongitude = 68400.0; // at that latitude

std::vector<Channel> carChannels()
{
    using S = const CarState &;
    return {
        // name, unit, decimals, value, swing, frequency, {rate, width, shift, multiplier, scale}
        {"Time", "s", 3, [](S s) { return s.time; }, 0.0, 1.0, {60, 4}},
        {"Lap Dist Pct", "%", 3, [](S s) { return 100.0 * s.lapFraction; }, 0.0, 1.0, {60, 4}},
        {"Lap Number", "", 0, [](S s) { return double(s.lap); }, 0.0, 1.0, {60, 2}},
        {"Lap Last Lap Time", "s", 4, [](S s) { return s.lastLapTime; }, 0.0, 1.0, {60, 4}},
        {"Lap Current Lap Time", "s", 3, [](S s) { return s.lapTimer; }, 0.0, 1.0, {60, 4}},
        {"Ground Speed", "km/h", 1, [](S s) { return kilometresPerHour * s.speed; }, 0.0, 1.0, {60, 2, 0, 1, 2}},
        {"Gear", "", 0, [](S s) { return double(gear(s)); }, 0.0, 1.0, {60, 2}},
        {"Engine RPM", "rpm", 0, engineSpeed, 25.0, 20.0, {60, 2}},
        {"Throttle Pos", "%", 1, throttle, 0.0, 1.0, {60, 2}},
        {"Brake Pos", "%", 1, brake, 0.0, 1.0, {60, 2}},
        {"Steering Angle", "deg", 1, [](S s) { return 1900.0 * s.curvature; }, 2.5, 7.0, {60, 2}},
        {"G-Force Lat", "G", 3, lateralForce, 0.06, 25.0, {360, 2}},
        {"G-Force Long", "G", 3, [](S s) { return s.acceleration / gravity; }, 0.05, 25.0, {60, 2}},
        {"Engine Temp", "C", 1, [](S s) { return warmed(68.0, 93.0, 900.0, s); }, 0.4, 0.2, {1, 2, 60}},
        {"Oil Pressure", "kPa", 0, [](S s) { return 150.0 + engineSpeed(s) / 25.0; }, 8.0, 10.0, {10, 2, 0, 5}},
        {"Fuel Level", "l", 2, [](S s) { return 38.0 - 0.00058 * s.odometer; }, 0.05, 3.0, {20, 2}},
        {"Tyre Temp FL",
         "C",
         1,
         [](S s) { return warmed(42.0, 86.0, 1500.0, s) + 4.0 * lateralForce(s); },
         0.5,
         2.0,
         {50, 2, 40}},
        {"Wheel Speed FL", "km/h", 1, [](S s) { return wheelSpeed(s, -1.0); }, 0.3, 30.0, {100, 2}},
        {"Susp Pos FL", "mm", 2, [](S s) { return suspension(s, 1.0, 1.0); }, 1.5, 60.0, {500, 2}},
        {"Vibration", "G", 2, [](S s) { return 0.002 * s.speed; }, 2.0, 400.0, {1000, 2}},
        {"Distance", "m", 1, [](S s) { return s.odometer; }, 0.0, 1.0, {10, 4}},
        {"GPS Latitude", "deg", 6, [](S s) { return originLatitude + s.north / metresPerLatitude; }, 0.0, 1.0, {20, 4}},
        {"GPS Longitude",
         "deg",
         6,
         [](S s) { return originLongitude + s.east / metresPerLongitude; },
         0.0,
         1.0,
         {20, 4}},
        {"Tyre Temp FR",
         "C",
         1,
         [](S s) { return warmed(42.0, 84.0, 1500.0, s) - 4.0 * lateralForce(s); },
         0.5,
         2.0,
         {50, 2, 40}},
        {"Tyre Temp RL",
         "C",
         1,
         [](S s) { return warmed(41.0, 91.0, 1300.0, s) + 4.0 * lateralForce(s); },
         0.5,
         2.0,
         {50, 2, 40}},
        {"Tyre Temp RR",
         "C",
         1,
         [](S s) { return warmed(41.0, 89.0, 1300.0, s) - 4.0 * lateralForce(s); },
         0.5,
         2.0,
         {50, 2, 40}},
        {"Tyre Pres FL", "bar", 3, [](S s) { return warmed(1.45, 1.84, 1500.0, s); }, 0.004, 2.0, {10, 2}},
        {"Tyre Pres FR", "bar", 3, [](S s) { return warmed(1.45, 1.83, 1500.0, s); }, 0.004, 2.0, {10, 2}},
        {"Tyre Pres RL", "bar", 3, [](S s) { return warmed(1.40, 1.81, 1300.0, s); }, 0.004, 2.0, {10, 2}},
        {"Tyre Pres RR", "bar", 3, [](S s) { return warmed(1.40, 1.80, 1300.0, s); }, 0.004, 2.0, {10, 2}},
        {"Wheel Speed FR", "km/h", 1, [](S s) { return wheelSpeed(s, 1.0); }, 0.3, 30.0, {100, 2}},
        {"Susp Pos FR", "mm", 2, [](S s) { return suspension(s, -1.0, 1.0); }, 1.5, 60.0, {500, 2}},
        {"Susp Pos RL", "mm", 2, [](S s) { return suspension(s, 1.0, -1.0); }, 1.5, 60.0, {500, 2}},
        {"Susp Pos RR", "mm", 2, [](S s) { return suspension(s, -1.0, -1.0); }, 1.5, 60.0, {500, 2}},
        {"Battery", "V", 2, [](S) { return 13.8; }, 0.12, 5.0, {10, 2}},
        {"Air Temp", "C", 1, [](S) { return 18.5; }, 0.3, 0.02, {1, 2}},
    };
}

// Metres from the line. They have no random part, so they can be among the others without taking a source of chance
// from them.
std::vector<Channel> positionChannels()
{
    return {
        {"Pos X", "m", 2, [](const CarState &s) { return s.east; }, 0.0, 1.0, {60, 4}},
        {"Pos Y", "m", 2, [](const CarState &s) { return s.north; }, 0.0, 1.0, {60, 4}},
    };
}

constexpr std::ptrdiff_t beforePositions = 13; // the channels of lap and driver come first

// A channel without a meaning: a sensor value that wanders round a centre of its own.
Channel auxiliary(int number)
{
    static constexpr std::array<quint16, 9> rates = {60, 1, 100, 10, 360, 20, 500, 50, 1000};
    static constexpr std::array<const char *, 6> units = {"V", "bar", "C", "%", "mA", ""};
    static constexpr std::array<double (*)(const CarState &), 4> centres = {
        [](const CarState &s) { return 12.0 + 0.2 * s.speed; },
        [](const CarState &) { return 850.0; },
        [](const CarState &s) { return 40.0 * s.curvature; },
        [](const CarState &s) { return 75.0 + 3.0 * s.acceleration; },
    };
    static constexpr std::array<double, 4> swings = {2.0, 120.0, 6.0, 9.0};
    static constexpr std::array<int, 4> decimals = {3, 1, 3, 2};
    const auto index = static_cast<size_t>(number);
    const size_t kind = index % centres.size();
    const auto width = static_cast<quint16>(index % 5 == 4 ? 4 : 2);
    return {"Aux " + QByteArray::number(number + 1).rightJustified(4, '0'),
            units[index % units.size()],
            decimals[kind],
            centres[kind],
            swings[kind],
            1.0 + static_cast<double>(number % 13),
            {rates[index % rates.size()], width}};
}

} // namespace

double Channel::scaledValue(const CarState &state) const
{
    static constexpr std::array<double, 7> powersOfTen = {1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
    double result = value(state);
    if (swing > 0.0)
        result += swing * smoothNoise(key, state.time * frequency);
    return result * powersOfTen[static_cast<size_t>(decimals)];
}

std::vector<Channel> loggerChannels(quint64 seed, int count)
{
    std::vector<Channel> channels = carChannels();
    const std::vector<Channel> positions = positionChannels();
    const auto own = static_cast<int>(channels.size() + positions.size());
    for (int i = own; i < count; ++i)
        channels.push_back(auxiliary(i - own));
    constexpr quint64 firstStream = 100;
    for (size_t i = 0; i < channels.size(); ++i)
        channels[i].key = chanceKey(seed, firstStream + i);
    channels.insert(channels.begin() + beforePositions, positions.begin(), positions.end());
    if (count > 0 && count < own)
        channels.resize(static_cast<size_t>(count));
    return channels;
}

bool isLapChannel(const Channel &channel)
{
    return channel.name.startsWith("Lap ");
}

} // namespace samples
