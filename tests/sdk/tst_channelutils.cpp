#include "testing.h"

#include "sdk/channelutils.h"

#include <limits>
#include <numeric>

using namespace KOV::SDK;
using namespace Testing;

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
    void channelsShrinkAndGrow()
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

    void beginnings_data()
    {
        const Table<Doubles, Doubles, Doubles> row("samples", "reference", "expected");
        row("stood at zero", {0, 0, 30, 40}, {0, .1, .3, .4}, {0, 30 * .1 / .3, 30, 40});
        row("not yet reset", {90, 91, 1, 2, 3}, {.9, .91, .1, .2, .3}, {1 * .9 / .1, 1 * .91 / .1, 1, 2, 3});
        row("one anchor for all", {9, 1, 2, 8, 3}, {.1, .2, .3, .4, .5}, {3 * .1 / .5, 1, 2, 3 * .4 / .5, 3});
        row("rises", {1, 2, 3}, {.1, .2, .3}, {1, 2, 3});
        row("level", {7, 7, 7}, {.1, .2, .3}, {7, 7, 7});
        row("anchor of zero", {5, 0}, {.1, .2}, {5, 0});
        row("anchor within tolerance", {5, 1e-12}, {.1, .2}, {5, 1e-12});
        row("anchor beyond tolerance", {5, 2e-12}, {.5, .5}, {2e-12, 2e-12});
        row("negative anchor gives way", {4, 3, -2}, {1, 2, 4}, {-1 * 1.0 / 2, -1, -2});
        row("NaN is sound", {notANumber, 3, 1}, {.1, .2, .4}, {notANumber, 1 * .2 / .4, 1});
        row("reference of zero", {9, 1}, {.5, 0}, {infinity, 1});
        row("one sample", {0}, {0}, {0});
        row("empty", {}, {}, {});
        row("longer reference", {5, 1}, {1, 2, 3}, {1.0 * 1 / 2, 1});
    }
    void beginnings()
    {
        QFETCH(Doubles, samples);
        QFETCH(Doubles, reference);
        QFETCH(Doubles, expected);
        const auto channel = channelOf(samples);
        channel->setUnit(u"s"_s);
        ChannelUtils::normalizeChannelBeginning(channel.get(), channelOf(reference).get());
        QVERIFY(sameSamples(channel->samples(), expected));
        QCOMPARE(channel->unit(), u"s"_s);
    }

    void ramps_data()
    {
        const Table<Doubles, qsizetype, qsizetype> row("samples", "leading", "trailing"); // how many samples go
        row("both ends", {.99, .98, .01, .5, .97, .02}, 2, 1);
        row("edges stay", {.95, .5, .05}, 0, 0);
        row("front alone", {.96, .96, .5}, 2, 0);
        row("end alone", {.5, .04, 0}, 0, 2);
        row("NaN ends both", {.99, notANumber, .99, .01, notANumber, .01}, 1, 1);
        row("all above", {.99, .98, .97}, 3, 0);
        row("all below", {.01, .02, .03}, 0, 3);
        row("above, then below", {.99, .01, .02}, 1, 2);
        row("empty", {}, 0, 0);
    }
    // The lap holds the ramp, a channel under two names, a short one, a null one and a calculated one.
    void ramps()
    {
        QFETCH(Doubles, samples);
        QFETCH(qsizetype, leading);
        QFETCH(qsizetype, trailing);
        Doubles other(samples.size());
        std::iota(other.begin(), other.end(), 0.0);
        const auto ramp = channelOf(samples);
        const auto twice = channelOf(other);
        const auto brief = channelOf({1});
        const auto calculated = channelOf(other);
        Lap lap;
        ChannelUtils::enforceMonotonicRamp(&lap, ramp.get()); // another lap's: it trims nothing
        lap.addChannel(twice, u"a"_s);
        ChannelUtils::enforceMonotonicRamp(&lap, ramp.get());
        QVERIFY(ramp->size() == std::ssize(samples) && twice->size() == ramp->size());
        lap.addChannel(ramp, u"ramp"_s);
        lap.addChannel(twice, u"b"_s);
        lap.addChannel(brief, u"brief"_s);
        lap.addChannel(nullptr, u"null"_s);
        lap.addCalculatedChannel(calculated, u"calculated"_s);
        ChannelUtils::enforceMonotonicRamp(&lap, ramp.get());
        QVERIFY(sameSamples(ramp->samples(), Doubles(samples.begin() + leading, samples.end() - trailing)));
        QVERIFY(sameSamples(twice->samples(), Doubles(other.begin() + leading, other.end() - trailing)));
        QCOMPARE(brief->isEmpty(), leading + trailing > 0);
        QVERIFY(sameSamples(calculated->samples(), other));
    }
};

QTEST_APPLESS_MAIN(TestChannelUtils)
#include "tst_channelutils.moc"
