#include "ldwriter.h"
#include "testing.h"

#include "ld/lapcutter.h"

#include <limits>

using namespace Testing;

namespace {

using Doubles = std::vector<double>;
using Floats = std::vector<float>;
using Samples = QMap<QString, Floats>;
using Ints = QList<int>;

constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr double none = KOV::SDK::invalidValue;

// Ten samples, a cut at index 4, so that lap 0 can have a time.
Samples timed(const Floats &currentTime, const Floats &lastTime)
{
    return {{u"lapdistpct"_s, {0, .25F, .5F, .75F, 0, .2F, .4F, .6F, .8F, .9F}},
            {u"lap"_s, {1, 1, 1, 1, 2, 2, 2, 2, 2, 2}},
            {u"lapcurrentlaptime"_s, currentTime},
            {u"laplastlaptime"_s, lastTime}};
}

} // namespace

class TestLapCutter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void counters_data()
    {
        constexpr int least = std::numeric_limits<int>::min();
        constexpr int most = std::numeric_limits<int>::max();
        const Table<Floats, Ints, Ints> row("counter", "sizes", "numbers");
        row("rises", {1, 1, 1, 2, 2, 2, 3, 3}, {3, 3, 1}, {1, 2, 3});
        row("rises at the end", {1, 1, 1, 1, 2}, {4}, {1});
        row("falls", {3, 3, 1, 1, 4, 4, 4}, {4, 2}, {3, 4});
        row("ramp", {1, 1, 1.25F, 1.5F, 1.75F, 2, 2, 2}, {2, 1, 1, 1, 2}, {1, 1, 1, 1, 2});
        row("begins on a ramp", {1.5F, 2, 2, 2, 2}, {0, 1, 3}, {1, 1, 2});
        row("negative", {-1.5F, -1.5F, -1, -.5F, 0, 0}, {3, 2}, {-1, 0});
        row("beyond 32 bits", {-1e10F, -1e10F, 0, 1e10F, 1e10F}, {2, 1, 1}, {least, 0, most});
        row("infinity", {0, 0, infinity, -infinity, 3}, {2, 2}, {0, most});
        row("NaN", {notANumber, 0, 0, 1, 1}, {3, 1}, {0, 1});
    }
    void counters()
    {
        QFETCH(Floats, counter);
        const Laps laps = cutLaps({}, {{u"lap"_s, counter}, {u"lapdistpct"_s, counter}});
        Ints sizes;
        Ints numbers;
        Doubles joined;
        for (const auto &lap : laps) {
            const auto samples = lap->channel(u"lap"_s)->samples();
            sizes.append(static_cast<int>(samples.size()));
            numbers.append(lap->header().lapNumber);
            joined.insert(joined.end(), samples.begin(), samples.end());
        }
        QVERIFY(areSound(laps));
        QTEST(sizes, "sizes");
        QTEST(numbers, "numbers");
        QVERIFY(sameSamples(joined, {counter.begin(), counter.end() - 1}));
    }

    void lapTimes_data()
    {
        const Table<Samples, QTime> row("samples", "lapTime");
        const Floats falls{87, 88, 89, 90, 90.3F, 90.4F, .05F, .1F, .15F, .2F};
        const auto last = [](float seconds) { return Floats{1, 2, 3, 4, 5, 6, seconds, 8, 9, 10}; };
        const QTime invalid;
        row("after the cut", timed(falls, last(90.416F)), QTime(0, 1, 30, 416));
        row("at the cut", timed({87, 88, 89, 90, 0, 1, 2, 3, 4, 5}, last(0)), QTime(0, 0, 5));
        row("before the cut", timed({87, 88, 89, 0, 1, 2, 3, 4, 5, 6}, last(0)), invalid);
        row("of exactly 5", timed({1, 2, 3, 4, 5, 6, 1, 8, 2, 3}, last(0)), QTime(0, 0, 9));
        row("past a NaN", timed({9, 9, 9, 9, 9, notANumber, 0, 0, 9, 0}, last(0)), QTime(0, 0, 10));
        row("half a millisecond", timed(falls, last(.0625F + 1)), QTime(0, 0, 1, 63));
        row("zero", timed(falls, last(0)), QTime(0, 0));
        row("least int", timed(falls, last(-2147483.648F)), QTime(3, 28, 36, 352));
        row("above an int", timed(falls, last(2147483.75F)), invalid);
        row("NaN", timed(falls, last(notANumber)), invalid);
        row("last times end early", timed(falls, {1, 2, 3, 4, 5, 6}), invalid);
        row("no running times", timed({}, last(90)), invalid);
        // A counter that begins on a ramp: an empty lap and one of a sample have the same fall before them.
        Samples ramp = timed({9, 0, 0, 0, 0, 0, 0, 0, 0, 0}, last(0));
        ramp[u"lap"_s] = {1.5F, 2, 2, 2, 2, 2, 2, 2, 2, 2};
        row("cut at 0", ramp, QTime(0, 0, 2));
    }
    void lapTimes()
    {
        QFETCH(Samples, samples);
        const Laps laps = cutLaps({}, samples);
        QVERIFY(laps.size() >= 2 && !laps.last()->header().lapTime.isValid());
        for (qsizetype i = 0; i + 1 < laps.size(); ++i)
            QTEST(laps[i]->header().lapTime, "lapTime");
    }

    void needsFiveSamples()
    {
        const Floats rising{0, 1, 2, 3, 4, 5, 6, 7, 8};
        // The lengths of distance and counter, and what they come to: no cut lies behind the counter's end.
        const std::array<int, 3> rows[]{{0, 9, 0}, {9, 0, 0}, {4, 9, 0}, {9, 4, 0}, {5, 5, 4}, {9, 5, 5}};
        for (const auto &[distance, counter, lapCount] : rows) {
            const Laps laps = cutLaps({}, {{u"lapdistpct"_s, {rising.begin(), rising.begin() + distance}},
                                           {u"lap"_s, {rising.begin(), rising.begin() + counter}}});
            QCOMPARE(laps.size(), lapCount);
        }
        QVERIFY(cutLaps({}, {}).isEmpty());
    }

    void percentOfDistance()
    {
        // Name and unit of the record, and what the laps have: their unit, and a factor on all of many samples.
        const std::tuple<QByteArray, QByteArray, QString, double> rows[]{
            {"lapdistpct", "%", u"pu"_s, 0.01}, {"lapdistpct", "pu", u"pu"_s, 1}, {"LapDistPct", "%", u"%"_s, 1}};
        const QString name = u"lapdistpct"_s;
        for (const auto &[storedName, storedUnit, unit, factor] : rows) {
            const auto record = LdWriter::channel(storedName, {}, storedUnit).header;
            const Laps laps = cutLaps({{name, record}}, {{name, Floats(3000, 10.1F)}, {u"lap"_s, Floats(3000, 1)}});
            QCOMPARE(laps[0]->channel(name)->unit(), unit);
            QVERIFY(sameSamples(*laps[0], "lapdistpct", Doubles(2999, double{10.1F} * factor)));
            QCOMPARE(laps[0]->channel(u"lap"_s)->unit(), QString());
        }
    }

    void channelsHaveOneLength()
    {
        Samples samples = timed({1, 2, 3, 4, 90, 91, 4, 5, 6, 7}, {1, 2});
        samples[u"lapdistpct"_s] = {0, 25, 50, 75, 0, 50, 100, 150, 200, 250};
        samples[u"short"_s] = {1, 2, 3, 4, 5, 6};
        samples[u"long"_s] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        const Laps laps = cutLaps({}, samples);
        QCOMPARE(laps.size(), 2);
        QVERIFY(sameSamples(*laps[0], "short", {1, 2, 3, 4}));
        QVERIFY(sameSamples(*laps[1], "short", {5, 6, none, none, none}));
        QVERIFY(sameSamples(*laps[1], "laplastlaptime", Doubles(5, none)));
        QVERIFY(sameSamples(*laps[1], "long", {5, 6, 7, 8, 9}));
        // A timer that restarts late is repaired.
        QVERIFY(sameSamples(*laps[0], "lapcurrentlaptime", {1, 2, 3, 4}));
        QVERIFY(sameSamples(*laps[1], "lapcurrentlaptime", {0, 2, 4, 5, 6}));
    }
};

QTEST_APPLESS_MAIN(TestLapCutter)
#include "tst_lapcutter.moc"
