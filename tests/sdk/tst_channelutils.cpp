#include "testing.h"

#include "sdk/channelutils.h"

#include <limits>

using namespace KOV::SDK;
using Testing::sameSamples;

namespace {

using Doubles = std::vector<double>;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

QSharedPointer<Channel> channelOf(const Doubles &samples)
{
    auto channel = QSharedPointer<Channel>::create();
    channel->append(samples);
    return channel;
}

} // namespace

class TestChannelUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void channelsShrinkAndGrow();
    void beginnings_data();
    void beginnings();
    void ramps_data();
    void ramps();
    void rampOfAnotherLapTrimsNothing();
};

void TestChannelUtils::channelsShrinkAndGrow()
{
    Channel channel{1, 2, 3, 4};
    QVERIFY(channel.unit().isNull());
    channel.resize(2);
    const double *const block = channel.samples().data();
    channel.append(5);
    QVERIFY(channel.samples().data() == block && sameSamples(channel.samples(), {1, 2, 5}));
    channel.resize(5);
    QVERIFY(sameSamples(channel.samples(), {1, 2, 5, 0, 0}) && channel.isValid(4));
    channel.popFront();
    channel.popBack();
    QVERIFY(sameSamples(channel.samples(), {2, 5, 0}));
    channel.popFront(2);
    channel.popBack();
    QVERIFY(channel.isEmpty() && channel.samples().data());
    channel.shrinkToFit();
    QVERIFY(!channel.samples().data());
}

void TestChannelUtils::beginnings_data()
{
    QTest::addColumn<Doubles>("samples");
    QTest::addColumn<Doubles>("reference");
    QTest::addColumn<Doubles>("expected");
    const auto add = [](const char *name, const Doubles &samples, const Doubles &reference, const Doubles &expected) {
        QTest::newRow(name) << samples << reference << expected;
    };
    add("stood at zero", {0, 0, 30, 40}, {0, .1, .3, .4}, {0, 30 * .1 / .3, 30, 40});
    add("not yet reset", {90, 91, 1, 2, 3}, {.9, .91, .1, .2, .3}, {1 * .9 / .1, 1 * .91 / .1, 1, 2, 3});
    add("one anchor for all", {9, 1, 2, 8, 3}, {.1, .2, .3, .4, .5}, {3 * .1 / .5, 1, 2, 3 * .4 / .5, 3});
    add("rises", {1, 2, 3}, {.1, .2, .3}, {1, 2, 3});
    add("level", {7, 7, 7}, {.1, .2, .3}, {7, 7, 7});
    add("anchor of zero", {5, 0}, {.1, .2}, {5, 0});
    add("anchor within tolerance", {5, 1e-12}, {.1, .2}, {5, 1e-12});
    add("anchor beyond tolerance", {5, 2e-12}, {.5, .5}, {2e-12, 2e-12});
    add("negative anchor gives way", {4, 3, -2}, {1, 2, 4}, {-1 * 1.0 / 2, -1, -2});
    add("NaN is sound", {notANumber, 3, 1}, {.1, .2, .4}, {notANumber, 1 * .2 / .4, 1});
    add("reference of zero", {9, 1}, {.5, 0}, {infinity, 1});
    add("one sample", {0}, {0}, {0});
    add("empty", {}, {}, {});
    add("longer reference", {5, 1}, {1, 2, 3}, {1.0 * 1 / 2, 1});
}

void TestChannelUtils::beginnings()
{
    QFETCH(Doubles, samples);
    QFETCH(Doubles, reference);
    QFETCH(Doubles, expected);
    const auto channel = channelOf(samples);
    channel->setUnit(QStringLiteral("s"));
    ChannelUtils::normalizeChannelBeginning(channel.get(), channelOf(reference).get());
    QVERIFY(sameSamples(channel->samples(), expected));
    QCOMPARE(channel->unit(), QStringLiteral("s"));
}

void TestChannelUtils::ramps_data()
{
    QTest::addColumn<Doubles>("samples");
    QTest::addColumn<qsizetype>("leading"); // samples that go
    QTest::addColumn<qsizetype>("trailing");
    const auto add = [](const char *name, const Doubles &samples, qsizetype leading, qsizetype trailing) {
        QTest::newRow(name) << samples << leading << trailing;
    };
    add("both ends", {.99, .98, .01, .5, .97, .02}, 2, 1);
    add("edges stay", {.95, .5, .05}, 0, 0);
    add("front alone", {.96, .96, .5}, 2, 0);
    add("end alone", {.5, .04, 0}, 0, 2);
    add("NaN ends both", {.99, notANumber, .99, .01, notANumber, .01}, 1, 1);
    add("all above", {.99, .98, .97}, 3, 0);
    add("all below", {.01, .02, .03}, 0, 3);
    add("above, then below", {.99, .01, .02}, 1, 2);
    add("empty", {}, 0, 0);
}

// The lap holds the ramp, a channel under two names, a short one, a null one and a calculated one.
void TestChannelUtils::ramps()
{
    QFETCH(Doubles, samples);
    QFETCH(qsizetype, leading);
    QFETCH(qsizetype, trailing);
    Doubles other(samples.size());
    for (std::size_t i = 0; i < other.size(); ++i)
        other[i] = static_cast<double>(i);
    const auto ramp = channelOf(samples);
    const auto twice = channelOf(other);
    const auto brief = QSharedPointer<Channel>::create(std::initializer_list<double>{1});
    const auto calculated = channelOf(other);
    Lap lap;
    lap.addChannel(ramp, QStringLiteral("ramp"));
    lap.addChannel(twice, QStringLiteral("a"));
    lap.addChannel(twice, QStringLiteral("b"));
    lap.addChannel(brief, QStringLiteral("brief"));
    lap.addChannel(nullptr, QStringLiteral("null"));
    lap.addCalculatedChannel(calculated, QStringLiteral("calculated"));
    ChannelUtils::enforceMonotonicRamp(&lap, ramp.get());
    QVERIFY(sameSamples(ramp->samples(), Doubles(samples.begin() + leading, samples.end() - trailing)));
    QVERIFY(sameSamples(twice->samples(), Doubles(other.begin() + leading, other.end() - trailing)));
    QCOMPARE(brief->isEmpty(), leading + trailing > 0);
    QVERIFY(sameSamples(calculated->samples(), other));
}

void TestChannelUtils::rampOfAnotherLapTrimsNothing()
{
    const auto channel = channelOf({.99, .5});
    const auto foreign = channelOf({.99, .5});
    Lap lap;
    ChannelUtils::enforceMonotonicRamp(&lap, foreign.get());
    lap.addChannel(channel, QStringLiteral("ramp"));
    ChannelUtils::enforceMonotonicRamp(&lap, foreign.get());
    QCOMPARE(channel->size(), 2);
    QCOMPARE(foreign->size(), 2);
}

QTEST_APPLESS_MAIN(TestChannelUtils)
#include "tst_channelutils.moc"
