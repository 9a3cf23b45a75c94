#include "testing.h"

#include "ld/resample.h"

#include <limits>
#include <numeric>

using Floats = std::vector<float>;

class TestResample : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        const Testing::Table<Floats, int, Floats> row("input", "rate", "expected");
        row("30", {0, 10, 20}, 30, {0, 5, 10, 15, 20, 20});
        row("20", {0, 10, 20}, 20, {0, 3.3333335F, 6.666667F, 10, 13.333334F, 16.666666F, 20, 20, 20});
        row("120 picks", {0, 10, 20, 30}, 120, {0, 20});
        row("60", {1, 2, 3}, 60, {1, 2, 3});
        row("one sample", {7}, 20, {7, 7, 7});
        row("one of many", {7, 8, 9}, 1000, {7});
        row("empty", {}, 20, {});
        row("rate 0", {1, 2}, 0, {});
        row("negative rate", {1, 2}, -60, {});
    }
    void values()
    {
        QFETCH(Floats, input);
        QFETCH(int, rate);
        QTEST(resample(input, rate, 60), "expected");
    }

    void lengths_data()
    {
        const Testing::Table<int, int, qint64, Floats> row("length", "rate", "expected",
                                                           "tail"); // of the ramp 0, 1, ...
        row("one more than exact", 100, 100, 61, {96.666664F, 98.33333F, 99});
        row("position rounds up", 45, 100, 28, {44});
        row("several blocks", 20000, 30, 40000, {19998, 19998.5F, 19999, 19999});
        row("highest rate", 65535, 65535, 60, {});
    }
    void lengths()
    {
        QFETCH(int, length);
        QFETCH(int, rate);
        QFETCH(qint64, expected);
        QFETCH(Floats, tail);
        Floats input(static_cast<std::size_t>(length));
        std::iota(input.begin(), input.end(), 0.0F);
        const Floats output = resample(input, rate, 60);
        QCOMPARE(static_cast<qint64>(output.size()), expected);
        QCOMPARE(resampledLength(length, rate, 60), expected);
        QVERIFY(std::equal(tail.rbegin(), tail.rend(), output.rbegin()));
        QCOMPARE(output.front(), 0.0F);
    }

    void tooLongForVector()
    {
        QCOMPARE(resampledLength(std::numeric_limits<qint64>::max(), 1, std::numeric_limits<int>::max()), 0);
    }
};

QTEST_APPLESS_MAIN(TestResample)
#include "tst_resample.moc"
