// Channels brought to another rate.

#include "testing.h"

#include "ld/resample.h"

#include <limits>
#include <numeric>

using namespace Testing;
using Floats = std::vector<float>;

constexpr auto infinity = std::numeric_limits<float>::infinity();

class TestResample : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resampled_data()
    {
        Floats ramp(65535);
        std::iota(ramp.begin(), ramp.end(), 0.0F);
        const auto first = [&ramp](std::ptrdiff_t length) { return Floats(ramp.begin(), ramp.begin() + length); };
        const Table<Floats, int, qint64, Floats> row("input", "rate", "length", "tail");
        row("30", {0, 10, 20}, 30, 6, {0, 5, 10, 15, 20, 20});
        row("20", {0, 10, 20}, 20, 9, {0, 3.3333335F, 6.666667F, 10, 13.333334F, 16.666666F, 20, 20, 20});
        row("80, fused", {.1F, .2F, .7F}, 80, 3, {.1F, .366666704F, .7F}); // .3666667F in separate steps or in double
        row("120 picks, nothing leaks", {0, infinity, 20, infinity}, 120, 2, {0, 20});
        row("one sample", {7}, 20, 3, {7, 7, 7});
        Floats waves(20000);
        for (std::size_t i = 1; i < waves.size(); i += 2)
            waves[i] = 1;
        row("position in single precision", waves, 20, 60000, {.333984375F, .666015625F, 1, 1, 1});
        row("empty", {}, 20, 0, {});
        row("rate 0", {1, 2}, 0, 0, {});
        row("negative rate", {1, 2}, -60, 0, {});
        row("one more than exact", first(100), 100, 61, {96.666664F, 98.33333F, 99});
        row("product rounds down", first(5), 100, 3, {0, 1.6666666F, 3.3333333F});
        row("several blocks", first(20000), 30, 40000, {19998, 19998.5F, 19999, 19999});
        row("highest rate", ramp, 65535, 60, {});
    }
    void resampled()
    {
        QFETCH(Floats, input);
        QFETCH(int, rate);
        QFETCH(Floats, tail);
        const Floats output = resample(input, rate, 60);
        QTEST(static_cast<qint64>(output.size()), "length");
        QTEST(resampledLength(std::ssize(input), rate, 60), "length");
        QVERIFY(std::equal(tail.rbegin(), tail.rend(), output.rbegin()));
        QVERIFY(output.empty() || output.front() == input.front());
        // No vector is as long, and no rate is negative.
        QCOMPARE(resampledLength(std::numeric_limits<qint64>::max() / 2, 60, 60) + resampledLength(1, 60, -60), 0);
    }
};

QTEST_APPLESS_MAIN(TestResample)
#include "tst_resample.moc"
