#include "ldwriter.h"
#include "testing.h"

#include "ld/ldx.h"
#include "ld/loadlaps.h"

#include <numeric>
#include <sys/resource.h>

using namespace Testing;
using KOV::SDK::Session;
using LdWriter::Channel;
using LdWriter::channel;

class TestLoadLaps : public QObject
{
    Q_OBJECT

    Files files;

private Q_SLOTS:
    void recordsBecomeChannels()
    {
        Channel unreadable = channel("Speed", {9, 9, 9});
        unreadable.header.sampleWidth = 1;
        Channel absurd = channel("speed", {9, 9, 9});
        absurd.header.sampleCount = 4000000000U;
        Channel absurdCounter = absurd;
        LdWriter::setText(absurdCounter.header.name, "lap");
        const QByteArray file = LdWriter::log(
            {absurdCounter, channel("lapdistpct", {0, 50, 99, 0, 50, 99, 0}, "%"),
             channel("Lap", {1, 1, 1, 2, 2, 2, 2}), channel("SPEED", {}), unreadable, absurd,
             channel("speed", {1, 2, 3, 4, 5, 6, 7}, "km/h"), channel("Speed", {8, 8, 8, 8, 8, 8, 8}, "mph"),
             channel("lap", {3, 3, 3, 3, 3, 3, 3}), channel("", {2, 2, 2, 2, 2, 2, 2}),
             channel(" a B ", {4, 4, 4, 4, 4, 4, 4}), channel("1 Hz", {7}, "m", 1), channel("20 Hz", {0, 3, 6}, {}, 20),
             channel("120 Hz", {0, 9, 1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6, 9}, {}, 120)});
        const Laps laps = loadLaps(files.write(u"log.ld"_s, file));
        QCOMPARE(laps.size(), 2);
        QVERIFY(sameSamples(*laps[0], "lapdistpct", {0.0, 50 * 0.01, 99 * 0.01}));
        QVERIFY(sameSamples(*laps[0], "speed", {1, 2, 3}));
        QCOMPARE(laps[0]->channel(u"speed"_s)->unit(), u"km/h"_s);
        QVERIFY(sameSamples(*laps[1], "lap", {2, 2, 2}));
        QVERIFY(sameSamples(*laps[1], "", {2, 2, 2}));
        QVERIFY(sameSamples(*laps[1], " a b ", {4, 4, 4}));
        QVERIFY(sameSamples(*laps[1], "1 hz", {7, 7, 7}));
        QVERIFY(sameSamples(*laps[1], "20 hz", {3, 4, 5}));
        QVERIFY(sameSamples(*laps[1], "120 hz", {3, 4, 5}));
    }

    void sessions()
    {
        const std::pair<QString, Session> sessions[]{{u"Race"_s, Session::Race},
                                                     {u"Offline testing"_s, Session::TestSession},
                                                     {u"Test"_s, Session::TestSession},
                                                     {u"Qualify"_s, Session::Qualify},
                                                     {u"Practice"_s, Session::Practice},
                                                     {u"Warmup"_s, Session::Warmup},
                                                     {u"Race 2"_s, Session::UnknownSession},
                                                     {u"race"_s, Session::UnknownSession}};
        for (const auto &[word, session] : sessions)
            QCOMPARE(getSessionFromString(word), session);
    }

    // A log of 1 MiB, or its first 64 bytes. All channels claim the same bytes, which are not there; a counter that
    // rises at each sample has its own.
    void hostileLogs_data()
    {
        const Table<quint32, quint16, bool> row("sampleCount", "sampleRate", "isRising");
        row("four billion samples", 4294967295U, 60, false);
        row("the same bytes for all", 500000, 60, false);
        row("one per second", 600000, 1, false);
        row("two long channels at one per second", 340000, 1, false);
        row("highest rate", 40U << 20, 65535, false);
        row("short channels", 10, 60, false);
        row("a lap of every sample", 32000, 60, true);
        row("ramps of laps", 3000, 1, true);
    }
    // The process must stay below 512 MiB over all rows; its peak is read from the kernel.
    void hostileLogs()
    {
        QFETCH(quint32, sampleCount);
        QFETCH(quint16, sampleRate);
        QFETCH(bool, isRising);
        std::vector<Channel> channels{channel("lapdistpct", {}), channel("lap", {})};
        while (channels.size() < (1 << 20) / sizeof(LdChannelHeader))
            channels.push_back(channel("c" + QByteArray::number(channels.size()), {}));
        for (Channel &entry : channels) {
            entry.header.sampleCount = sampleCount;
            entry.header.sampleRate = sampleRate;
        }
        if (isRising) {
            std::vector<qint16> rising(sampleCount);
            std::iota(rising.begin(), rising.end(), qint16{0});
            channels[1].samples = LdWriter::raw(rising);
        }
        const QByteArray file = LdWriter::log(channels);
        for (const qsizetype length : {qsizetype{64}, file.size()})
            loadLaps(files.write(u"log.ld"_s, file.first(length)));
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        qInfo("%ld KiB at most so far", usage.ru_maxrss);
        QVERIFY(isSanitized || usage.ru_maxrss < 512L * 1024);
    }
};

QTEST_APPLESS_MAIN(TestLoadLaps)
#include "tst_loadlaps.moc"
