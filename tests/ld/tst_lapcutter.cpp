#include "ldwriter.h"
#include "testing.h"

#include "ld/lapcutter.h"

#include <algorithm>
#include <limits>
#include <numeric>

using namespace Testing;
using KOV::SDK::LapHeader;

namespace {

using Doubles = std::vector<double>;
using Floats = std::vector<float>;
using Samples = QMap<QString, Floats>;

constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr double none = KOV::SDK::invalidValue;

// What one lap of a counter comes to.
struct Cut
{
    Doubles counter;
    int lapNumber;
    bool operator==(const Cut &) const = default;
};
using Cuts = QList<Cut>;

// Ten samples, a cut at index 4, so that lap 0 can have a time.
Samples timed(const Floats &currentTime, const Floats &lastTime)
{
    return {{u"lapdistpct"_s, Floats{0, .25F, .5F, .75F, 0, .2F, .4F, .6F, .8F, .9F}},
            {u"lap"_s, Floats{1, 1, 1, 1, 2, 2, 2, 2, 2, 2}},
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
        const Table<Floats, Cuts> row("counter", "cuts");
        row("rises", {1, 1, 1, 2, 2, 2, 3, 3}, {{{1, 1, 1}, 1}, {{2, 2, 2}, 2}, {{3}, 3}});
        row("never rises", {4, 4, 4, 4, 4}, {{{4, 4, 4, 4}, 4}});
        row("rises at the end", {1, 1, 1, 1, 2}, {{{1, 1, 1, 1}, 1}});
        row("falls", {3, 3, 1, 1, 4, 4, 4}, {{{3, 3, 1, 1}, 3}, {{4, 4}, 4}});
        row("jumps", {2, 2, 5, 5, 5}, {{{2, 2}, 2}, {{5, 5}, 5}});
        row("ramp", {1, 1, 1.25F, 1.5F, 1.75F, 2, 2, 2},
            {{{1, 1}, 1}, {{1.25}, 1}, {{1.5}, 1}, {{1.75}, 1}, {{2, 2}, 2}});
        row("begins on a ramp", {1.5F, 2, 2, 2, 2}, {{{}, 1}, {{1.5}, 1}, {{2, 2, 2}, 2}});
        row("negative", {-1.5F, -1.5F, -1, -.5F, 0, 0}, {{{-1.5, -1.5, -1}, -1}, {{-.5, 0}, 0}});
        row("beyond 32 bits", {-1e10F, -1e10F, 0, 1e10F, 1e10F}, {{{-1e10, -1e10}, least}, {{0}, 0}, {{1e10}, most}});
        row("infinity", {0, 0, infinity, -infinity, 3}, {{{0, 0}, 0}, {{none, -double{infinity}}, most}});
        row("NaN", {notANumber, 0, 0, 1, 1}, {{{none, 0, 0}, 0}, {{1}, 1}});
    }
    void counters()
    {
        QFETCH(Floats, counter);
        const Laps laps = cutLaps({}, {{u"lap"_s, counter}, {u"lapdistpct"_s, counter}});
        Cuts cuts;
        for (const auto &lap : laps) {
            const auto samples = lap->channel(u"lap"_s)->samples();
            Cut cut{{samples.begin(), samples.end()}, lap->header().lapNumber};
            // The rows stand for what is no finite number by the one value that compares equal to itself.
            const auto isNoNumber = [](double value) { return !(value < 1e300); };
            std::replace_if(cut.counter.begin(), cut.counter.end(), isNoNumber, none);
            cuts.append(cut);
            QVERIFY(!lap->header().lapTime.isValid());
        }
        QVERIFY(areSound(laps));
        QTEST(cuts, "cuts");
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
        row("a later lap's", timed({87, 88, 89, 0, 1, 2, 3, 90, 91, 0}, last(0)), QTime(0, 0, 10));
        row("of exactly 5", timed({1, 2, 3, 4, 5, 6, 1, 8, 2, 3}, last(0)), QTime(0, 0, 9));
        row("past a NaN", timed({9, 9, 9, 9, 9, notANumber, 0, 0, 9, 0}, last(0)), QTime(0, 0, 10));
        row("half a millisecond", timed(falls, last(.0625F + 1)), QTime(0, 0, 1, 63));
        row("zero", timed(falls, last(0)), QTime(0, 0));
        row("-1", timed(falls, last(-1)), QTime(23, 59, 59));
        row("25 hours", timed(falls, last(90000)), QTime(1, 0));
        row("least int", timed(falls, last(-2147483.648F)), QTime(3, 28, 36, 352));
        row("above an int", timed(falls, last(2147483.75F)), invalid);
        row("huge", timed(falls, last(1e30F)), invalid);
        row("infinite", timed(falls, last(-infinity)), invalid);
        row("NaN", timed(falls, last(notANumber)), invalid);
        row("last times end early", timed(falls, {1, 2, 3, 4, 5, 6}), invalid);
        row("no last times", timed(falls, {}), invalid);
        row("no running times", timed({}, last(90)), invalid);
        // The empty first lap of a counter that begins on a ramp.
        Samples ramp = timed({9, 0, 0, 0, 0, 0, 0, 0, 0, 0}, last(0));
        ramp[u"lap"_s] = {1.5F, 2, 2, 2, 2, 2, 2, 2, 2, 2};
        row("cut at 0", ramp, QTime(0, 0, 2));
    }
    void lapTimes()
    {
        QFETCH(Samples, samples);
        const Laps laps = cutLaps({}, samples);
        QVERIFY(laps.size() >= 2);
        QTEST(laps.first()->header().lapTime, "lapTime");
        QVERIFY(!laps.last()->header().lapTime.isValid());
    }

    void needsFiveSamples_data()
    {
        const Table<int, int, qsizetype> row("distance", "counter", "lapCount"); // lengths; -1 is absent
        row("nothing", -1, -1, 0);
        row("no distance", -1, 9, 0);
        row("no counter", 9, -1, 0);
        row("short distance", 4, 9, 0);
        row("short counter", 9, 4, 0);
        row("five", 5, 5, 4);
        row("no cut behind the counter", 9, 5, 5);
    }
    void needsFiveSamples()
    {
        QFETCH(int, distance);
        QFETCH(int, counter);
        const Floats rising{0, 1, 2, 3, 4, 5, 6, 7, 8};
        Samples samples{{u"other"_s, rising}};
        if (distance >= 0)
            samples.insert(u"lapdistpct"_s, Floats(rising.begin(), rising.begin() + distance));
        if (counter >= 0)
            samples.insert(u"lap"_s, Floats(rising.begin(), rising.begin() + counter));
        QTEST(cutLaps({}, samples).size(), "lapCount");
    }

    void units_data()
    {
        // The sample is what a stored 10.1 comes to.
        const Table<QByteArray, QByteArray, QString, double> row("storedName", "storedUnit", "unit", "sample");
        const double stored = double{10.1F};
        row("percent", "lapdistpct", "%", u"pu"_s, stored * 0.01);
        row("fraction", "lapdistpct", "pu", u"pu"_s, stored);
        row("capitals", "LapDistPct", "%", u"%"_s, stored);
        row("no record", {}, {}, {}, stored);
    }
    void units()
    {
        QFETCH(QByteArray, storedName);
        QFETCH(QByteArray, storedUnit);
        QFETCH(double, sample);
        const QString name = u"lapdistpct"_s;
        QMap<QString, LdChannelHeader> records;
        if (!storedName.isEmpty())
            records.insert(name, LdWriter::record(storedName, storedUnit));
        const Laps laps = cutLaps(records, {{name, Floats(5, 10.1F)}, {u"lap"_s, Floats(5, 1)}});
        QTEST(laps.first()->channel(name)->unit(), "unit");
        QVERIFY(sameSamples(*laps.first(), "lapdistpct", Doubles(4, sample)));
    }

    void channelsHaveOneLength()
    {
        Samples samples = timed({}, {});
        samples.insert(u"short"_s, {1, 2, 3, 4, 5, 6});
        samples.insert(u"shorter"_s, {1, 2});
        samples.insert(u"long"_s, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
        const Laps laps = cutLaps({}, samples);
        QCOMPARE(laps.size(), 2);
        QVERIFY(areSound(laps));
        QVERIFY(sameSamples(*laps[0], "short", {1, 2, 3, 4}));
        QVERIFY(sameSamples(*laps[1], "short", {5, 6, none, none, none}));
        QVERIFY(sameSamples(*laps[0], "shorter", {1, 2, none, none}));
        QVERIFY(sameSamples(*laps[1], "shorter", Doubles(5, none)));
        QVERIFY(sameSamples(*laps[1], "long", {5, 6, 7, 8, 9}));
        QVERIFY(sameSamples(*laps[0], "laplastlaptime", Doubles(4, none)));
        const LapHeader &header = laps[0]->header();
        QVERIFY(header.dynamicData.isEmpty() && !header.dateTime.isValid() && header.venueName.isEmpty());
        QCOMPARE(header.session, KOV::SDK::Session::UnknownSession);
    }

    void timerIsRepaired()
    {
        Samples samples = timed({1, 2, 3, 4, 90, 91, 4, 5, 6, 7}, {});
        const QMap<QString, LdChannelHeader> records{{u"lapdistpct"_s, LdWriter::record("lapdistpct", "%")}};
        samples[u"lapdistpct"_s] = {0, 25, 50, 75, 0, 50, 100, 150, 200, 250};
        const Laps laps = cutLaps(records, samples);
        QVERIFY(sameSamples(*laps[0], "lapcurrentlaptime", {1, 2, 3, 4}));
        QVERIFY(sameSamples(*laps[1], "lapcurrentlaptime", {0, 2, 4, 5, 6}));
        samples.remove(u"lapcurrentlaptime"_s);
        QVERIFY(!cutLaps(records, samples).first()->channel(u"lapcurrentlaptime"_s));
    }

    // A timer that never restarts would be walked to its end for each lap.
    void manyLapsTakeLinearTime()
    {
        Floats rising(200000);
        std::iota(rising.begin(), rising.end(), 0.0F);
        Samples samples = timed(rising, rising);
        samples[u"lap"_s] = samples[u"lapdistpct"_s] = rising;
        const Laps laps = cutLaps({}, samples);
        QCOMPARE(laps.size(), 200000 - 1);
        QVERIFY(!laps.first()->header().lapTime.isValid());
    }
};

QTEST_APPLESS_MAIN(TestLapCutter)
#include "tst_lapcutter.moc"
