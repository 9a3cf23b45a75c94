#include "testing.h"

#include "ld/resample.h"

#include <numeric>

using Floats = std::vector<float>;

class TestResample : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data();
    void values();
    void lengths_data();
    void lengths();
};

void TestResample::values_data()
{
    QTest::addColumn<Floats>("input");
    QTest::addColumn<int>("rate");
    QTest::addColumn<Floats>("expected");
    QTest::newRow("30") << Floats{0, 10, 20} << 30 << Floats{0, 5, 10, 15, 20, 20};
    QTest::newRow("20") << Floats{0, 10, 20} << 20
                        << Floats{0, 3.3333335F, 6.666667F, 10, 13.333334F, 16.666666F, 20, 20, 20};
    QTest::newRow("120 picks") << Floats{0, 10, 20, 30} << 120 << Floats{0, 20};
    QTest::newRow("60") << Floats{1, 2, 3} << 60 << Floats{1, 2, 3};
    QTest::newRow("one sample") << Floats{7} << 20 << Floats{7, 7, 7};
    QTest::newRow("one of many") << Floats{7, 8, 9} << 1000 << Floats{7};
    QTest::newRow("empty") << Floats{} << 20 << Floats{};
    QTest::newRow("rate 0") << Floats{1, 2} << 0 << Floats{};
    QTest::newRow("negative rate") << Floats{1, 2} << -60 << Floats{};
}

void TestResample::values()
{
    QFETCH(Floats, input);
    QFETCH(int, rate);
    QTEST(resample(input, rate, 60), "expected");
}

void TestResample::lengths_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("rate");
    QTest::addColumn<qint64>("expected");
    QTest::addColumn<Floats>("tail"); // of the ramp 0, 1, 2, ...
    QTest::newRow("one more than exact") << 100 << 100 << 61LL << Floats{96.666664F, 98.33333F, 99};
    QTest::newRow("position rounds up") << 45 << 100 << 28LL << Floats{44};
    QTest::newRow("several blocks") << 20000 << 30 << 40000LL << Floats{19999, 19999};
    QTest::newRow("highest rate") << 65535 << 65535 << 60LL << Floats{};
    QTest::newRow("too long for a vector") << 1 << 1 << 0LL << Floats{};
}

void TestResample::lengths()
{
    QFETCH(int, length);
    QFETCH(int, rate);
    QFETCH(qint64, expected);
    QFETCH(Floats, tail);
    if (expected == 0) {
        QCOMPARE(resampledLength(std::numeric_limits<qint64>::max(), rate, std::numeric_limits<int>::max()), expected);
        return;
    }
    Floats input(static_cast<std::size_t>(length));
    std::iota(input.begin(), input.end(), 0.0F);
    const Floats output = resample(input, rate, 60);
    QCOMPARE(static_cast<qint64>(output.size()), expected);
    QCOMPARE(resampledLength(length, rate, 60), expected);
    QVERIFY(std::equal(tail.rbegin(), tail.rend(), output.rbegin()));
    QCOMPARE(output.front(), 0.0F);
}

QTEST_APPLESS_MAIN(TestResample)
#include "tst_resample.moc"
