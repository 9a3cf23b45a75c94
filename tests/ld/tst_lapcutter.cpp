#include "ldwriter.h"
#include "testing.h"

#include "ld/lapcutter.h"

#include <algorithm>
#include <limits>

using KOV::SDK::Lap;
using KOV::SDK::LapHeader;
using Testing::sameSamples;

namespace {

using Floats = std::vector<float>;
using Laps = QList<QSharedPointer<Lap>>;

constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr double none = KOV::SDK::invalidValue;

// What one lap of a counter comes to.
struct Cut
{
    std::vector<double> counter;
    int lapNumber;
    bool operator==(const Cut &) const = default;
};
using Cuts = QList<Cut>;

using Samples = QMap<QString, Floats>;

// Ten samples, a cut at index 4, so that lap 0 can have a time.
Samples timed(const Floats &currentTime, const Floats &lastTime)
{
    return {{QStringLiteral("lapdistpct"), Floats{0, .25F, .5F, .75F, 0, .2F, .4F, .6F, .8F, .9F}},
            {QStringLiteral("lap"), Floats{1, 1, 1, 1, 2, 2, 2, 2, 2, 2}},
            {QStringLiteral("lapcurrentlaptime"), currentTime},
            {QStringLiteral("laplastlaptime"), lastTime}};
}

} // namespace

class TestLapCutter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void counters_data();
    void counters();
    void lapTimes_data();
    void lapTimes();
    void needsFiveSamples_data();
    void needsFiveSamples();
    void headers();
    void units_data();
    void units();
    void channelsHaveOneLength();
    void timerIsRepaired();
    void manyLapsTakeLinearTime();
};

void TestLapCutter::counters_data()
{
    QTest::addColumn<Floats>("counter");
    QTest::addColumn<Cuts>("cuts");
    QTest::newRow("rises") << Floats{1, 1, 1, 2, 2, 2, 3, 3} << Cuts{{{1, 1, 1}, 1}, {{2, 2, 2}, 2}, {{3}, 3}};
    QTest::newRow("never rises") << Floats{4, 4, 4, 4, 4} << Cuts{{{4, 4, 4, 4}, 4}};
    QTest::newRow("rises at the end") << Floats{1, 1, 1, 1, 2} << Cuts{{{1, 1, 1, 1}, 1}};
    QTest::newRow("falls") << Floats{3, 3, 1, 1, 4, 4, 4} << Cuts{{{3, 3, 1, 1}, 3}, {{4, 4}, 4}};
    QTest::newRow("jumps") << Floats{2, 2, 5, 5, 5} << Cuts{{{2, 2}, 2}, {{5, 5}, 5}};
    QTest::newRow("ramp") << Floats{1, 1, 1.25F, 1.5F, 1.75F, 2, 2, 2}
                          << Cuts{{{1, 1}, 1}, {{1.25}, 1}, {{1.5}, 1}, {{1.75}, 1}, {{2, 2}, 2}};
    QTest::newRow("begins on a ramp") << Floats{1.5F, 2, 2, 2, 2} << Cuts{{{}, 1}, {{1.5}, 1}, {{2, 2, 2}, 2}};
    QTest::newRow("negative") << Floats{-1.5F, -1.5F, -1, -.5F, 0, 0} << Cuts{{{-1.5, -1.5, -1}, -1}, {{-.5, 0}, 0}};
    QTest::newRow("beyond 32 bits") << Floats{-1e10F, -1e10F, 0, 1e10F, 1e10F}
                                    << Cuts{{{-1e10F, -1e10F}, -2147483647 - 1}, {{0}, 0}, {{1e10F}, 2147483647}};
    QTest::newRow("infinity") << Floats{0, 0, infinity, -infinity, 3}
                              << Cuts{{{0, 0}, 0}, {{none, -infinity}, 2147483647}};
    QTest::newRow("NaN") << Floats{notANumber, 0, 0, 1, 1} << Cuts{{{none, 0, 0}, 0}, {{1}, 1}};
}

void TestLapCutter::counters()
{
    QFETCH(Floats, counter);
    QFETCH(Cuts, cuts);
    const Laps laps = cutLaps({}, {{QStringLiteral("lap"), counter}, {QStringLiteral("lapdistpct"), counter}});
    Cuts actual;
    for (const auto &lap : laps) {
        const auto samples = lap->channel(QStringLiteral("lap"))->samples();
        Cut cut{{samples.begin(), samples.end()}, lap->header().lapNumber};
        // The rows stand for what is no finite number by the one value that compares equal to itself.
        std::replace_if(
            cut.counter.begin(), cut.counter.end(), [](double v) { return !(v < 1e300); }, none);
        actual.append(cut);
        const qsizetype index = actual.size() - 1;
        QCOMPARE(lap->header().completed, index + 1 < laps.size());
        QCOMPARE(lap->header().stintLapIndex, static_cast<int>(index));
        QCOMPARE(lap->header().lapKind, index == 0 ? 0 : 1);
        QVERIFY(!lap->header().lapTime.isValid());
    }
    QCOMPARE(actual, cuts);
}

void TestLapCutter::lapTimes_data()
{
    QTest::addColumn<Samples>("samples");
    QTest::addColumn<QTime>("lapTime");
    const Floats falls{87, 88, 89, 90, 90.3F, 90.4F, .05F, .1F, .15F, .2F};
    const auto last = [](float seconds) { return Floats{1, 2, 3, 4, 5, 6, seconds, 8, 9, 10}; };
    const QTime invalid;
    QTest::newRow("after the cut") << timed(falls, last(90.416F)) << QTime(0, 1, 30, 416);
    QTest::newRow("at the cut") << timed({87, 88, 89, 90, 0, 1, 2, 3, 4, 5}, last(0)) << QTime(0, 0, 5);
    QTest::newRow("before the cut") << timed({87, 88, 89, 0, 1, 2, 3, 4, 5, 6}, last(0)) << invalid;
    QTest::newRow("a later lap's") << timed({87, 88, 89, 0, 1, 2, 3, 90, 91, 0}, last(0)) << QTime(0, 0, 10);
    QTest::newRow("of exactly 5") << timed({1, 2, 3, 4, 5, 6, 1, 8, 2, 3}, last(0)) << QTime(0, 0, 9);
    QTest::newRow("past a NaN") << timed({9, 9, 9, 9, 9, notANumber, 0, 0, 9, 0}, last(0)) << QTime(0, 0, 10);
    QTest::newRow("half a millisecond") << timed(falls, last(.0625F + 1)) << QTime(0, 0, 1, 63);
    QTest::newRow("zero") << timed(falls, last(0)) << QTime(0, 0);
    QTest::newRow("-1") << timed(falls, last(-1)) << QTime(23, 59, 59);
    QTest::newRow("25 hours") << timed(falls, last(90000)) << QTime(1, 0);
    QTest::newRow("least int") << timed(falls, last(-2147483.648F)) << QTime(3, 28, 36, 352);
    QTest::newRow("above an int") << timed(falls, last(2147483.75F)) << invalid;
    QTest::newRow("huge") << timed(falls, last(1e30F)) << invalid;
    QTest::newRow("infinite") << timed(falls, last(-infinity)) << invalid;
    QTest::newRow("NaN") << timed(falls, last(notANumber)) << invalid;
    QTest::newRow("last times end early") << timed(falls, {1, 2, 3, 4, 5, 6}) << invalid;
    QTest::newRow("no last times") << timed(falls, {}) << invalid;
    QTest::newRow("no running times") << timed({}, last(90)) << invalid;
    // The empty first lap of a counter that begins on a ramp.
    Samples ramp = timed({9, 0, 0, 0, 0, 0, 0, 0, 0, 0}, last(0));
    ramp[QStringLiteral("lap")] = {1.5F, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    QTest::newRow("cut at 0") << ramp << QTime(0, 0, 2);
}

void TestLapCutter::lapTimes()
{
    QFETCH(Samples, samples);
    const Laps laps = cutLaps({}, samples);
    QVERIFY(laps.size() >= 2);
    QTEST(laps.first()->header().lapTime, "lapTime");
    QVERIFY(!laps.last()->header().lapTime.isValid());
}

void TestLapCutter::needsFiveSamples_data()
{
    QTest::addColumn<int>("distance"); // length; -1 is absent
    QTest::addColumn<int>("counter");
    QTest::addColumn<qsizetype>("lapCount");
    QTest::newRow("nothing") << -1 << -1 << qsizetype{0};
    QTest::newRow("no distance") << -1 << 9 << qsizetype{0};
    QTest::newRow("no counter") << 9 << -1 << qsizetype{0};
    QTest::newRow("short distance") << 4 << 9 << qsizetype{0};
    QTest::newRow("short counter") << 9 << 4 << qsizetype{0};
    QTest::newRow("five") << 5 << 5 << qsizetype{4};
    QTest::newRow("no cut behind the counter") << 9 << 5 << qsizetype{5};
}

void TestLapCutter::needsFiveSamples()
{
    QFETCH(int, distance);
    QFETCH(int, counter);
    const Floats rising{0, 1, 2, 3, 4, 5, 6, 7, 8};
    Samples samples{{QStringLiteral("other"), rising}};
    if (distance >= 0)
        samples.insert(QStringLiteral("lapdistpct"), Floats(rising.begin(), rising.begin() + distance));
    if (counter >= 0)
        samples.insert(QStringLiteral("lap"), Floats(rising.begin(), rising.begin() + counter));
    QTEST(cutLaps({}, samples).size(), "lapCount");
}

void TestLapCutter::headers()
{
    const Laps laps = cutLaps({}, timed({}, {}));
    QCOMPARE(laps.size(), 2);
    const LapHeader &first = laps[0]->header();
    const LapHeader &second = laps[1]->header();
    QVERIFY(!first.lapId.isNull() && first.lapId != second.lapId);
    QVERIFY(!first.stintId.isNull() && first.stintId == second.stintId);
    QVERIFY(!first.sessionId.isNull() && first.sessionId == second.sessionId && first.sessionId != first.stintId);
    QVERIFY(first.stintNumber == 1 && second.stintNumber == 1);
    QVERIFY(first.dynamicData.isEmpty() && !first.dateTime.isValid() && first.venueName.isEmpty());
    QCOMPARE(first.session, KOV::SDK::Session::UnknownSession);
}

void TestLapCutter::units_data()
{
    QTest::addColumn<QByteArray>("storedName");
    QTest::addColumn<QByteArray>("storedUnit");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<double>("sample"); // of a stored 10.1
    const double stored = double{10.1F};
    QTest::newRow("percent") << QByteArray("lapdistpct") << QByteArray("%") << QStringLiteral("pu") << stored * 0.01;
    QTest::newRow("fraction") << QByteArray("lapdistpct") << QByteArray("pu") << QStringLiteral("pu") << stored;
    QTest::newRow("capitals") << QByteArray("LapDistPct") << QByteArray("%") << QStringLiteral("%") << stored;
    QTest::newRow("no record") << QByteArray() << QByteArray() << QString() << stored;
}

void TestLapCutter::units()
{
    QFETCH(QByteArray, storedName);
    QFETCH(QByteArray, storedUnit);
    QFETCH(double, sample);
    const QString name = QStringLiteral("lapdistpct");
    QMap<QString, LdChannelHeader> records;
    if (!storedName.isEmpty())
        records.insert(name, LdWriter::record(storedName, storedUnit));
    const Laps laps = cutLaps(records, {{name, Floats(5, 10.1F)}, {QStringLiteral("lap"), Floats(5, 1)}});
    QTEST(laps.first()->channel(name)->unit(), "unit");
    QVERIFY(sameSamples(*laps.first(), "lapdistpct", std::vector<double>(4, sample)));
}

void TestLapCutter::channelsHaveOneLength()
{
    Samples samples = timed({}, {});
    samples.insert(QStringLiteral("short"), {1, 2, 3, 4, 5, 6});
    samples.insert(QStringLiteral("shorter"), {1, 2});
    samples.insert(QStringLiteral("long"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    const Laps laps = cutLaps({}, samples);
    QCOMPARE(laps.size(), 2);
    QVERIFY(sameSamples(*laps[0], "short", {1, 2, 3, 4}));
    QVERIFY(sameSamples(*laps[1], "short", {5, 6, none, none, none}));
    QVERIFY(sameSamples(*laps[0], "shorter", {1, 2, none, none}));
    QVERIFY(sameSamples(*laps[1], "shorter", std::vector<double>(5, none)));
    QVERIFY(sameSamples(*laps[1], "long", {5, 6, 7, 8, 9}));
    QVERIFY(sameSamples(*laps[0], "laplastlaptime", std::vector<double>(4, none)));
}

void TestLapCutter::timerIsRepaired()
{
    Samples samples = timed({1, 2, 3, 4, 90, 91, 4, 5, 6, 7}, {});
    QMap<QString, LdChannelHeader> records{{QStringLiteral("lapdistpct"), LdWriter::record("lapdistpct", "%")}};
    samples[QStringLiteral("lapdistpct")] = {0, 25, 50, 75, 0, 50, 100, 150, 200, 250};
    const Laps laps = cutLaps(records, samples);
    QVERIFY(sameSamples(*laps[0], "lapcurrentlaptime", {1, 2, 3, 4}));
    QVERIFY(sameSamples(*laps[1], "lapcurrentlaptime", {0, 2, 4, 5, 6}));
    samples.remove(QStringLiteral("lapcurrentlaptime"));
    QVERIFY(!cutLaps(records, samples).first()->channel(QStringLiteral("lapcurrentlaptime")));
}

// A timer that never restarts would be walked to its end for each lap.
void TestLapCutter::manyLapsTakeLinearTime()
{
    constexpr std::size_t count = 200000;
    Floats counter(count);
    for (std::size_t i = 0; i < count; ++i)
        counter[i] = static_cast<float>(i);
    const Laps laps = cutLaps({}, {{QStringLiteral("lapdistpct"), Floats(count)},
                                   {QStringLiteral("lap"), counter},
                                   {QStringLiteral("lapcurrentlaptime"), counter},
                                   {QStringLiteral("laplastlaptime"), counter}});
    QCOMPARE(laps.size(), static_cast<qsizetype>(count) - 1);
    QVERIFY(!laps.first()->header().lapTime.isValid());
}

QTEST_APPLESS_MAIN(TestLapCutter)
#include "tst_lapcutter.moc"
