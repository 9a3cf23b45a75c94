// Laps on one grid: a car that drives by a formula is sampled as loggers do, and what comes back is compared with the
// formula.

#include "inspect/lapgrid.h"
#include "inspect/signalnames.h"
#include "inspect/trackmap.h"
#include "testing.h"

#include <cmath>

using namespace Inspect;
using namespace Testing;
using KOV::SDK::Channel;
using KOV::SDK::Lap;

namespace {

constexpr int gridPoints = 1001;

void add(Lap &lap, const QString &name, const std::vector<double> &samples, const QString &unit = {})
{
    auto channel = QSharedPointer<Channel>::create();
    channel->append(samples);
    channel->setUnit(unit);
    lap.addChannel(channel, name);
}

double rounded(double value, double step)
{
    return std::round(value / step) * step;
}

// How a logger sees a lap.
struct Logger
{
    double rate = 60.0;
    double firstSample = 0.004; // s after the line
    double placeStep = 1e-5;    // of the lap
    QString clock = u"time"_s;  // or none
    QString clockUnit = u"s"_s;
    double clockStep = 0.001;
    int missingRow = -1;
};

// When a lap of @p lapTime is at @p place: slow in the first half, and the later the faster.
double timeAt(double place, double lapTime)
{
    return lapTime * (place - 0.1 * std::sin(2.0 * place * M_PI) / M_PI);
}

double placeAt(double time, double lapTime)
{
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < 60; ++i)
        (timeAt((low + high) / 2.0, lapTime) < time ? low : high) = (low + high) / 2.0;
    return low;
}

Lap drivenLap(double lapTime, const Logger &logger)
{
    std::vector<double> places;
    std::vector<double> clock;
    const double unit = unitFactor(logger.clockUnit, u"s").value_or(1.0);
    int row = 0;
    for (double time = logger.firstSample; time < lapTime; time += 1.0 / logger.rate) {
        if (row++ == logger.missingRow)
            continue;
        places.push_back(rounded(placeAt(time, lapTime), logger.placeStep));
        clock.push_back(rounded((1234.5 + time) / unit, logger.clockStep));
    }
    Lap lap;
    add(lap, u"lapdistpct"_s, places, u"pu"_s);
    if (!logger.clock.isEmpty())
        add(lap, logger.clock, clock, logger.clockUnit);
    return lap;
}

std::vector<double> onGrid(const Lap &lap, LapAxis axis, const QString &name, Between between = Between::Linear)
{
    const auto course = courseOf({&lap, {}, true}, axis, 0.0);
    return course ? valuesOnGrid(*course, *lap.channel(name), 11, between) : std::vector<double>();
}

} // namespace

class TestLapGrid : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The difference of two laps follows the formula, and at the end it is that of the lap times. The place alone,
    // rounded to a hundred-thousandth of the lap, makes 0.7 ms.
    void anchoredDifferences_data()
    {
        const Table<Logger, double> row("logger", "toleranceMs"); // on the way
        row("as usual", {}, 1.0);
        row("20 per second", {.rate = 20, .firstSample = 0.041}, 1.5);
        row("minutes of four digits", {.clockUnit = u"min"_s, .clockStep = 1e-4}, 3.0);
        row("tenths of a second", {.clockStep = 0.1}, 1.0);
        row("no clock", {.clock = {}}, 1.0);
        row("position of three digits", {.placeStep = 1e-3}, 60.0);
        row("a row is missing", {.missingRow = 2000}, 1.8);
    }
    void anchoredDifferences()
    {
        QFETCH(const Logger, logger);
        QFETCH(const double, toleranceMs);
        Logger other = logger;
        other.firstSample = 0.9 / logger.rate;
        const Lap best = drivenLap(60.123, logger);
        const Lap slower = drivenLap(61.0, other);
        const auto bestCourse = courseOf({&best, 60123, true}, LapAxis::LapDistance, 0.0);
        const auto course = courseOf({&slower, 61000, true}, LapAxis::LapDistance, 0.0);
        QVERIFY(bestCourse && course);
        const std::vector<double> lost =
            differences(secondsOnGrid(*course, gridPoints), secondsOnGrid(*bestCourse, gridPoints));
        QCOMPARE(std::lround(lost.back() * 1000.0), 61000 - 60123);
        QCOMPARE(lost.front(), 0.0);
        for (int i = 0; i < gridPoints; ++i) {
            const double place = i / (gridPoints - 1.0);
            const double expected = timeAt(place, 61.0) - timeAt(place, 60.123);
            const double errorMs = std::abs(lost[static_cast<std::size_t>(i)] - expected) * 1000.0;
            QVERIFY2(errorMs <= toleranceMs, qPrintable(u"%1 ms off at %2"_s.arg(errorMs).arg(place)));
        }
    }

    // Which times a lap has: places in shares, a sample per second.
    void times_data()
    {
        const Table<std::vector<double>, int, bool, std::vector<double>> row("places", "timeMs", "completed",
                                                                             "seconds");
        const double no = qQNaN();
        row("whole lap", {0.125, 0.375, 0.625, 0.875}, 4000, true, {0, 1, 2, 3, 4});
        row("out lap", {0.5, 0.625, 0.75, 0.875}, 5000, true, {no, no, 1, 3, 5});
        row("unfinished lap", {0.0, 0.125, 0.25, 0.5}, 0, false, {0, 2, 3, no, no});
        row("neither line", {0.375, 0.5, 0.625}, 0, false, {no, no, no, no, no});
        row("clock against lap time", {0.0, 0.25, 0.5, 0.75, 1.0}, 9000, true, {no, no, no, no, no});
        row("no lap time", {0.0, 0.25, 0.5, 0.75, 1.0}, 0, true, {0, 1, 2, 3, 4});
        row("counter late at both ends", {0.97, 0.98, 0.0, 0.25, 0.5, 0.75, 1.0, 0.01}, 4000, true, {0, 1, 2, 3, 4});
        row("waits at the line", {0.0, 0.0, 0.25, 0.5, 0.75, 1.0}, 4000, true, {0, 1, 2, 3, 4});
        row("ends early", {0.0, 0.125, 0.25, 0.5}, 4000, true, {0, 2, 3, no, no});
        row("not completed, with a lap time", {0.0, 0.25, 0.5, 0.75, 1.0}, 4200, false, {0, 1, 2, 3, 4});
        row("stops, and goes back", {0.0, 0.25, 0.25, 0.2, 0.5, 0.75, 1.0}, 6000, true, {0, 1, 4, 5, 6});
    }
    void times()
    {
        QFETCH(const std::vector<double>, places);
        QFETCH(const int, timeMs);
        QFETCH(const bool, completed);
        QFETCH(const std::vector<double>, seconds);
        std::vector<double> clock;
        for (std::size_t i = 0; i < places.size(); ++i)
            clock.push_back(100.0 + static_cast<double>(i));
        Lap lap;
        add(lap, u"Lap Dist Pct"_s, places, u"pu"_s);
        add(lap, u"time"_s, clock, u"s"_s);
        const std::optional<int> lapTime = timeMs > 0 ? std::optional(timeMs) : std::nullopt;
        auto course = courseOf({&lap, lapTime, completed}, LapAxis::LapDistance, 0.0);
        QVERIFY(course);
        course->widestStep = 1.0; // a handful of samples
        const std::vector<double> actual = secondsOnGrid(*course, 5);
        for (std::size_t i = 0; i < seconds.size(); ++i)
            QVERIFY2(std::isnan(seconds[i]) ? std::isnan(actual[i]) : std::abs(actual[i] - seconds[i]) < 1e-9,
                     qPrintable(u"%1 at %2"_s.arg(actual[i]).arg(i)));
    }

    void values()
    {
        Lap lap;
        std::vector<double> places;
        std::vector<double> gears;
        for (int i = 0; i <= 200; ++i) {
            if (i > 100 && i < 140)
                continue; // a gap of a fifth of the lap
            places.push_back(0.0025 + i * 0.004975);
            gears.push_back(i < 50 ? 2.0 : 2.6);
        }
        add(lap, u"Car Pos Norm"_s, places);
        add(lap, u"gear"_s, gears);
        add(lap, u"speed"_s, places);
        lap.channel(u"speed"_s)->setValue(20, KOV::SDK::invalidValue);
        lap.channel(u"speed"_s)->setValue(60, std::numeric_limits<double>::infinity());
        const double no = qQNaN();
        const auto near = [](const std::vector<double> &actual, const std::vector<double> &expected) {
            return std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(), [](double a, double b) {
                return std::isnan(a) == std::isnan(b) && (std::isnan(a) || std::abs(a - b) < 1e-9);
            });
        };
        QVERIFY(near(onGrid(lap, LapAxis::LapDistance, u"speed"_s),
                     {0.0025, no, 0.2, no, 0.4, 0.5, no, 0.7, 0.8, 0.9, 0.9975}));
        QVERIFY(
            near(onGrid(lap, LapAxis::LapDistance, u"gear"_s, Between::Stepped), {2, 2, 2, 3, 3, 3, no, 3, 3, 3, 3}));
    }

    // Without a lap distance the distance is taken, and without that the time.
    void fallBacks()
    {
        Lap lap;
        add(lap, u"speed"_s, {36, 36, 36, 36, 36}, u"km/h"_s);
        const std::vector<TimedLap> laps{{&lap, {}, true}};
        QCOMPARE(commonAxis(laps), LapAxis::Time); // sixty samples per second
        QCOMPARE(axisLength(laps[0], LapAxis::Time), 5 / 60.0);
        add(lap, u"time"_s, {1, 2, 3, 4, 5}, u"min"_s);
        QCOMPARE(axisLength(laps[0], LapAxis::Time), 300.0);
        add(lap, u"distance"_s, {1, 2, 3, 4, 5}, u"km"_s);
        QCOMPARE(commonAxis(laps), LapAxis::Distance);
        QCOMPARE(axisLength(laps[0], LapAxis::Distance), 5000.0);
        add(lap, u"lapdistpct"_s, {0, 0, 0, 0, 0}, u"pu"_s); // says nothing
        QCOMPARE(commonAxis(laps), LapAxis::Distance);
        add(lap, u"lapdistpct"_s, {0, 0.125, 0.25, 0.375, 0.5}, u"pu"_s);
        QCOMPARE(commonAxis(laps), LapAxis::LapDistance);
        QCOMPARE(axisLength(laps[0], LapAxis::LapDistance), 8000.0);
        Lap single;
        add(single, u"speed"_s, {1});
        Lap bare;
        add(bare, u"distance"_s, {1, 2, 3}, u"m"_s);
        QCOMPARE(commonAxis(std::vector<TimedLap>{laps[0], {&single, {}, true}}), LapAxis::LapDistance);
        QCOMPARE(commonAxis(std::vector<TimedLap>{laps[0], {&bare, {}, true}}), LapAxis::Distance);
        // A completed lap has its own length, which ends where the next sample would be.
        QCOMPARE(courseOf({&bare, {}, true}, LapAxis::Distance, 8.0)->points.back().place, 2.0 / 3.0);
        QCOMPARE(courseOf({&bare, {}, false}, LapAxis::Distance, 8.0)->points.back().place, 0.25);
        QCOMPARE(courseOf({&bare, {}, false}, LapAxis::Distance, 0.0)->points.back().place, 1.0);
        QCOMPARE(courseOf({&bare, {}, false}, LapAxis::Distance, 0.0)->widestStep, 2.5); // five samples
        QVERIFY(!courseOf(laps[0], LapAxis::Time, 0.0)->hasTimes);
        lap.removeRecordedChannel(u"distance"_s);
        add(lap, u"speed"_s, {0, 36, 72, 108, 144}, u"KM/H"_s);
        QCOMPARE(axisLength(laps[0], LapAxis::LapDistance), (5.0 + 15.0 + 25.0 + 35.0) * 60.0 / 0.5);
        add(lap, u"speed"_s, {36, 36}, u"km/h"_s); // shorter than its lap, as other plug-ins may have it
        QCOMPARE(axisLength(laps[0], LapAxis::LapDistance), 0.0);
    }

    // A clock that cannot be one: sixty samples per second are taken instead.
    void clocks_data()
    {
        const Table<std::vector<double>, double> row("clock", "length");
        const double counted = 4 / 60.0;
        row("even", {1, 2, 3, 4}, 4.0);
        row("goes back", {4, 3, 5, 6}, counted);
        row("stands still", {3, 3, 3, 3}, counted);
        row("invalid", {1, KOV::SDK::invalidValue, 3, 4}, counted);
    }
    void clocks()
    {
        QFETCH(std::vector<double>, clock);
        Lap lap;
        add(lap, u"speed"_s, {1, 1, 1, 1});
        add(lap, u"time"_s, clock, u"s"_s);
        const double length = axisLength({&lap, {}, true}, LapAxis::Time);
        QTEST(length, "length");
    }

    void names()
    {
        Lap lap;
        for (const QString &name : {u"wheel speed fl"_s, u"THROTTLE"_s, u"brakepress"_s, u"STEERED_ANGLE"_s, u"GEAR"_s})
            add(lap, name, {1.0});
        QCOMPARE(findSignal(lap, Signal::Speed).name, u"wheel speed fl"_s);
        add(lap, u"Ground-Speed"_s, {1.0});
        QCOMPARE(findSignal(lap, Signal::Speed).name, u"Ground-Speed"_s);
        QCOMPARE(findSignal(lap, Signal::Throttle).name, u"THROTTLE"_s);
        QCOMPARE(findSignal(lap, Signal::Brake).name, u"brakepress"_s);
        QCOMPARE(findSignal(lap, Signal::Steering).name, u"STEERED_ANGLE"_s);
        QCOMPARE(findSignal(lap, Signal::Gear).name, u"GEAR"_s);
        QVERIFY(!findSignal(lap, Signal::Latitude).channel);
        QCOMPARE(unitFactor(u"km/h", u"m/s").value_or(0) * 36.0, 10.0);
        QVERIFY(!unitFactor(u"km/h", u"s") && !unitFactor({}, {}));
    }

    void map()
    {
        Lap lap;
        add(lap, u"lapdistpct"_s, {0, 0.25, 0.5, 0.75, 1}, u"pu"_s);
        QVERIFY(!findPositions(lap));
        add(lap, u"gps latitude"_s, {0, 60.0, 60.001, 60.001, 91.0}, u"deg"_s);
        add(lap, u"gps longitude"_s, {0, 10.0, 10.0, 10.002, 10.002}, u"deg"_s);
        auto course = courseOf({&lap, {}, true}, LapAxis::LapDistance, 0.0);
        course->widestStep = 1.0;
        auto points = trackOnGrid(*course, findPositions(lap).value(), 5);
        QVERIFY(std::isnan(points[0].east) && std::isnan(points[4].east)); // no fix yet, and no more
        QVERIFY(std::abs(points[2].north - points[1].north - 111.2) < 0.1);
        QVERIFY(std::abs(points[3].east - points[2].east - 111.2) < 0.1); // half as long at 60 degrees
        // Y is the height here.
        add(lap, u"Car Coord X"_s, {0, 10, 20, 30, 40}, u"m"_s);
        add(lap, u"Car Coord Y"_s, {1, 1, 2, 1, 1}, u"m"_s);
        add(lap, u"Car Coord Z"_s, {0, 0.01, 0.02, 0.03, 0.02}, u"km"_s);
        points = trackOnGrid(*course, findPositions(lap).value(), 5);
        QCOMPARE(points[3].east, 30.0);
        QCOMPARE(points[3].north, 30.0);
        // And here there is none.
        add(lap, u"Pos X"_s, {0, 1, 2, 3, 4}, u"m"_s);
        add(lap, u"Pos Y"_s, {0, 2, 4, 6, 8}, u"m"_s);
        points = trackOnGrid(*course, findPositions(lap).value(), 5);
        QCOMPARE(points[3].east, 3.0);
        QCOMPARE(points[3].north, 6.0);
    }
};

QTEST_GUILESS_MAIN(TestLapGrid)
#include "tst_lapgrid.moc"
