// Channels that shrink and grow, and the repairs of a lap's edges.

#include "testing.h"

#include "sdk/channelutils.h"

using namespace KOV::SDK;
using namespace Testing;

using Doubles = std::vector<double>;

class TestChannelUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void channelsShrinkAndGrow()
    {
        Channel channel{1, 2, 3, 4};
        QVERIFY(channel.unit().isNull());
        channel.resize(2);
        const double *const block = channel.samples().data();
        channel.append(5);
        channel.resize(4);
        QVERIFY(channel.samples().data() == block && sameSamples(channel.samples(), {1, 2, 5, 0}));
        channel.popFront();
        channel.popBack();
        QVERIFY(sameSamples(channel.samples(), {2, 5}));
        channel.popFront(2);
        QVERIFY(channel.isEmpty() && channel.samples().data() == block); // the room stays
        channel.shrinkToFit();
        QVERIFY(channel.isEmpty() && !channel.samples().data());
    }

    void beginnings_data()
    {
        const Table<Channel, Channel, Doubles> row("samples", "reference", "expected");
        row("stood at zero", {0, 0, 30, 40}, {0, .1, .3, .4}, {0, 30 * .1 / .3, 30, 40});
        row("not yet reset", {90, 91, 1, 2, 3}, {.9, .91, .1, .2, .3}, {1 * .9 / .1, 1 * .91 / .1, 1, 2, 3});
        row("one anchor for all", {9, 1, 2, 8, 3}, {.1, .2, .3, .4, .5}, {3 * .1 / .5, 1, 2, 3 * .4 / .5, 3});
        row("level", {7, 7, 7}, {.1, .2, .3}, {7, 7, 7});
        row("anchor within tolerance", {5, 1e-12}, {.1, .2}, {5, 1e-12});
        row("anchor beyond tolerance", {5, 2e-12}, {.5, .5}, {2e-12, 2e-12});
        row("negative anchor gives way", {4, -3, 3, -2}, {1, 2, 3, 4}, {-1.5, -3, -1.5, -2});
        row("product first", {5, 3}, {.1, .7}, {3 * .1 / .7, 3});
        row("NaN is sound", {qQNaN(), 3, 1}, {.1, .2, .4}, {qQNaN(), 1 * .2 / .4, 1});
        row("reference of zero", {9, 1}, {.5, 0}, {qInf(), 1});
        row("empty", {}, {}, {});
        row("longer reference", {5, 1}, {1, 2, 3}, {1.0 * 1 / 2, 1});
    }
    void beginnings()
    {
        QFETCH(Channel, samples);
        QFETCH(Channel, reference);
        QFETCH(Doubles, expected);
        samples.setUnit(u"s"_s);
        ChannelUtils::normalizeChannelBeginning(&samples, &reference);
        QCOMPARE(samples.unit(), u"s"_s);
        QVERIFY(sameSamples(samples.samples(), expected));
    }

    void ramps_data()
    {
        const Table<Channel, Doubles> row("samples", "rest");
        row("both ends", {.99, .96, .951, .01, .5, .97, .049}, {.01, .5, .97});
        row("edges stay", {.95, .5, .05}, {.95, .5, .05});
        row("NaN ends both", {.99, qQNaN(), .99, .01, qQNaN(), .01}, {qQNaN(), .99, .01, qQNaN()});
        row("all above", {.99, .98, .97}, {});
        row("all below", {.01, .02, .03}, {});
        row("above, then below", {.99, .01, .02}, {});
    }
    // The lap holds the ramp, a channel under two names, a short one, a null one and a calculated one.
    void ramps()
    {
        QFETCH(Channel, samples);
        QFETCH(Doubles, rest);
        const auto ramp = QSharedPointer<Channel>::create(samples);
        const auto twice = QSharedPointer<Channel>::create(samples);
        const auto brief = QSharedPointer<Channel>::create(std::initializer_list<double>{1});
        const auto calculated = QSharedPointer<Channel>::create(samples);
        Lap lap;
        lap.addChannel(twice, u"a"_s);
        ChannelUtils::enforceMonotonicRamp(&lap, ramp.get()); // another lap's: it trims nothing
        QVERIFY(ramp->size() == samples.size() && twice->size() == samples.size());
        lap.addChannel(ramp, u"ramp"_s);
        lap.addChannel(twice, u"b"_s);
        lap.addChannel(brief, u"brief"_s);
        lap.addChannel(nullptr, u"null"_s);
        lap.addCalculatedChannel(calculated, u"calculated"_s);
        ChannelUtils::enforceMonotonicRamp(&lap, ramp.get());
        QVERIFY(sameSamples(ramp->samples(), rest) && sameSamples(twice->samples(), rest));
        QCOMPARE(calculated->size(), samples.size());
        QCOMPARE(brief->isEmpty(), std::ssize(rest) < samples.size());
    }
};

QTEST_APPLESS_MAIN(TestChannelUtils)
#include "tst_channelutils.moc"
