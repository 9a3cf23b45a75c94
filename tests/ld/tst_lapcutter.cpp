// Where laps are cut out of a log's channels, and which times they get.

#include "ldwriter.h"
#include "testing.h"

#include "ld/lapcutter.h"

#include <limits>

using namespace Testing;
using KOV::SDK::invalidValue;

namespace {

using Floats = std::vector<float>;
using Ints = QList<int>;

constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();

} // namespace

class TestLapCutter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cuts_data()
    {
        constexpr int least = std::numeric_limits<int>::min();
        constexpr int most = std::numeric_limits<int>::max();
        const Table<Floats, std::size_t, Ints, Ints> row("counter", "distanceLength", "sizes", "numbers");
        row("rises", {1, 1, 1, 2, 2, 2, 3, 3}, 8, {3, 3, 1}, {1, 2, 3});
        row("rises at the end", {1, 1, 1, 1, 2}, 5, {4}, {1});
        row("falls", {3, 3, 1, 1, 4, 4, 4}, 7, {4, 2}, {3, 4});
        row("ramp", {1, 1, 1.25F, 1.5F, 1.75F, 2, 2, 2}, 8, {2, 1, 1, 1, 2}, {1, 1, 1, 1, 2});
        row("begins on a ramp", {1.5F, 2, 2, 2, 2}, 5, {0, 1, 3}, {1, 1, 2});
        row("negative", {-1.5F, -1.5F, -1, -.5F, 0, 0}, 6, {3, 2}, {-1, 0});
        row("beyond 32 bits", {-1e10F, -1e10F, 0, 1e10F, 1e10F}, 5, {2, 1, 1}, {least, 0, most});
        row("infinity", {0, 0, infinity, -infinity, 3}, 5, {2, 2}, {0, most});
        row("NaN", {notANumber, 0, 0, 1, 1}, 5, {3, 1}, {0, 1});
        row("long lap", Floats(3000, 1), 3000, {2999}, {1}); // copied in several blocks
        row("short counter", {1, 1, 1, 1, 2}, 9, {4, 4}, {1, 2});
        row("long counter", {1, 1, 2, 2, 2, 3, 3}, 5, {2, 2}, {1, 2});
        row("counter of four", {1, 1, 2, 2}, 9, {}, {});
        row("distance of four", {1, 1, 2, 2, 2}, 4, {}, {});
    }
    void cuts()
    {
        QFETCH(Floats, counter);
        QFETCH(std::size_t, distanceLength);
        const Laps laps = cutLaps({{u"lap"_s, LdWriter::channel("lap", {}, "m").header},
                                   {u"lapdistpct"_s, LdWriter::channel("lapdistpct", {}, "pu").header}},
                                  {{u"lap"_s, counter}, {u"lapdistpct"_s, Floats(distanceLength, .25F)}});
        Ints sizes;
        Ints numbers;
        for (const auto &lap : laps) {
            sizes.append(static_cast<int>(lap->size()));
            numbers.append(lap->header().lapNumber);
            QCOMPARE(lap->channel(u"lap"_s)->unit(), u"m"_s);
            QCOMPARE(lap->channel(u"lapdistpct"_s)->unit(), u"pu"_s);
            QVERIFY(sameSamples(*lap, "lapdistpct", std::vector<double>(static_cast<std::size_t>(lap->size()), .25)));
        }
        QVERIFY(areSound(laps));
        QTEST(sizes, "sizes");
        QTEST(numbers, "numbers");
    }

    // The stored name and unit decide, not the key; and the timer is repaired before it is filled up.
    void distanceAndTimer()
    {
        const std::tuple<const char *, const char *, QString, double> rows[]{
            {"lapdistpct", "%", u"pu"_s, 0.01}, {"LapDistPct", "%", u"%"_s, 1}, {"lapdistpct", "pu", u"pu"_s, 1}};
        for (const auto &[name, unit, expectedUnit, factor] : rows) {
            const Laps laps = cutLaps({{u"lapdistpct"_s, LdWriter::channel(name, {}, unit).header}},
                                      {{u"lapdistpct"_s, {1, 35, 50, 51, 52, 53}},
                                       {u"lap"_s, Floats(6, 1)},
                                       {u"lapcurrentlaptime"_s, {0, 0, 0}}});
            QCOMPARE(laps[0]->channel(u"lapdistpct"_s)->unit(), expectedUnit);
            QVERIFY(sameSamples(*laps[0], "lapdistpct", {factor, 35 * factor, 50 * factor, 51 * factor, 52 * factor}));
            QVERIFY(sameSamples(*laps[0], "lapcurrentlaptime", {0, 0, 0, invalidValue, invalidValue}));
        }
    }

    void lapTimes_data()
    {
        const Table<Floats, Floats, Floats, QTime> row("counter", "currentTime", "lastTime", "lapTime");
        const auto last = [](float seconds) { return Floats{1, 2, 3, 4, 5, 6, seconds, 8, 9, 10}; };
        const Floats cut{1, 1, 1, 1, 2, 2, 2, 2, 2, 2};
        const Floats falls{87, 88, 89, 90, 90.3F, 90.4F, .05F, .1F, .15F, .2F};
        row("after the cut", cut, falls, last(90.416F), QTime(0, 1, 30, 416));
        row("at the cut", cut, {87, 88, 89, 90, 0, 1, 2, 3, 4, 5}, last(0), QTime(0, 0, 5));
        row("before the cut", cut, {87, 88, 89, 0, 1, 2, 3, 4, 5, 6}, last(0), {});
        row("of exactly 5, then a little more", cut, {1, 2, 3, 4, 5, 6, 1, 8, 2.98F, 3}, last(0), QTime(0, 0, 9));
        row("of 5 in single precision, then more", cut, {1, 2, 3, 4, 5.0000005F, 3e-7F, 8, 0, 1, 2}, last(0),
            QTime(0, 0, 8));
        row("past a NaN", cut, {9, 9, 9, 9, 9, notANumber, 0, 0, 9, 0}, last(0), QTime(0, 0, 10));
        row("half a millisecond", cut, falls, last(.0625F + 1), QTime(0, 0, 1, 63));
        row("product in single precision", cut, falls, last(30.0005F), QTime(0, 0, 30, 1));
        row("zero", cut, falls, last(0), QTime(0, 0));
        row("least int", cut, falls, last(-2147483.648F), QTime(3, 28, 36, 352));
        row("above an int", cut, falls, last(2147483.75F), {});
        row("NaN", cut, falls, last(notANumber), {});
        row("last times end early", cut, falls, {1, 2, 3, 4, 5, 6}, {});
        row("no running times", cut, {}, last(90), {});
        // An empty lap and one of a sample have the same fall before them.
        row("cut at 0", {1.5F, 2, 2, 2, 2}, {9, 0, 0, 0, 0}, last(0), QTime(0, 0, 2));
    }
    void lapTimes()
    {
        QFETCH(Floats, counter);
        QFETCH(Floats, currentTime);
        QFETCH(Floats, lastTime);
        const Laps laps = cutLaps({}, {{u"lapdistpct"_s, counter},
                                       {u"lap"_s, counter},
                                       {u"lapcurrentlaptime"_s, currentTime},
                                       {u"laplastlaptime"_s, lastTime}});
        QVERIFY(laps.size() >= 2 && !laps.last()->header().lapTime.isValid());
        for (qsizetype i = 0; i + 1 < laps.size(); ++i)
            QTEST(laps[i]->header().lapTime, "lapTime");
    }
};

QTEST_APPLESS_MAIN(TestLapCutter)
#include "tst_lapcutter.moc"
