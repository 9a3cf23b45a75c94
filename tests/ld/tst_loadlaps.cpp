// From the path of a binary log to its laps; beside the text road; and what a log may cost.

#include "ldwriter.h"
#include "testing.h"

#include "csv/orvareader.h"
#include "ld/loadlaps.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <sys/resource.h>

using namespace KOV::SDK;
using namespace Testing;
using LdWriter::channel;

class TestLoadLaps : public QObject
{
    Q_OBJECT

    Files files;

private Q_SLOTS:
    void recordsBecomeChannels()
    {
        LdWriter::Channel unreadable = channel("Speed", {9, 9, 9});
        unreadable.header.sampleWidth = 1;
        LdWriter::Channel absurd = channel("lap", {9, 9, 9});
        absurd.header.sampleCount = 4000000000U;
        const QByteArray file = LdWriter::log(
            {absurd, channel("lapdistpct", {0, 50, 99, 0, 50, 99, 0}, "%"), channel("Lap", {1, 1, 1, 2, 2, 2, 2}),
             channel("SPEED", {}), unreadable, channel("speed", {1, 2, 3, 4, 5, 6, 7}, "km/h"),
             channel("Speed", {8, 8, 8, 8, 8, 8, 8}, "mph"), channel("lap", {3, 3, 3, 3, 3, 3, 3}),
             channel("", {2, 2, 2, 2, 2, 2, 2}), channel(QByteArray(60, 'x'), {4, 4, 4, 4, 4, 4, 4}, "m/s"),
             channel(" \xC3\x89 ", {7}, "\xC2\xB0\0x"_ba, 1), channel("short", {1, 2, 3, 4, 5}),
             channel("LapCurrentLapTime", {1, 2, 3, 90, 4, 5, 6}), channel("20 Hz", {0, 3, 6}, "%", 20),
             channel("120 Hz", {0, 9, 1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6, 9}, {}, 120)});
        const Laps laps = loadLaps(files.write(u"log.ld"_s, file));
        QCOMPARE(laps.size(), 2);
        // Names, units, and samples in the second lap.
        const std::tuple<QByteArray, QString, std::vector<double>> expected[]{
            {"speed", u"km/h"_s, {4, 5, 6}},
            {"lap", {}, {2, 2, 2}},
            {"", {}, {2, 2, 2}},
            {QByteArray(40, 'x') + "m/s", u"m/s"_s, {4, 4, 4}}, // a name that fills its field
            {" \xC3\xA9 ", u"\u00B0"_s, {7, 7, 7}},
            {"20 hz", u"%"_s, {3, 4, 5}},
            {"short", {}, {4, 5, KOV::SDK::invalidValue}},
            {"lapcurrentlaptime", {}, {0, 4, 5}}, // a timer that restarts late is repaired
            {"120 hz", {}, {3, 4, 5}},
            {"lapdistpct", u"pu"_s, {0.0, 50 * 0.01, 99 * 0.01}}};
        for (const auto &[name, unit, samples] : expected) {
            QVERIFY(sameSamples(*laps[1], name, samples));
            QCOMPARE(laps[1]->channel(QString::fromUtf8(name))->unit(), unit);
        }
    }

    // One simulated drive was written in both formats; the two roads must tell the same story of its whole laps.
    void twoRoads()
    {
        const auto isNear = [](double single, double value) { // in the text exact to its last digit
            return std::abs(single - value) <= 1e-7 + std::abs(value) * std::numeric_limits<float>::epsilon();
        };
        const QString drive = QStringLiteral(ORVA_SAMPLES "/club-race");
        const Laps text = ORVAReader(nullptr).importLaps(drive + u".csv"_s);
        const Laps binary = loadLaps(drive + u".ld"_s);
        QVERIFY(text.size() == 5 && binary.size() == 5 && areSound(binary));
        for (int i = 0; i < 4; ++i) {
            const LapHeader &header = text[i]->header();
            const LapHeader &other = binary[i]->header();
            QCOMPARE(other.lapNumber, header.lapNumber);
            QCOMPARE(other.lapTime, header.lapTime);
            QCOMPARE(other.session, header.session);
            QCOMPARE(other.venueName, header.venueName);
            QVERIFY(other.dynamicData.isEmpty() && !other.venueName.isEmpty()); // the sidecar is the text road's
            QVERIFY(membersOf(other.carInfo) == membersOf(header.carInfo));
            for (const QString &name : text[i]->getAvailableRecordedChannels()) {
                const auto channel = text[i]->channel(name);
                const auto twin = binary[i]->channel(name == u"lapnumber" ? u"lap"_s : name);
                QVERIFY2(twin && twin->unit() == channel->unit() && twin->size() == channel->size(), qPrintable(name));
                const auto single = twin->samples();
                QVERIFY2(std::equal(single.begin(), single.end(), channel->samples().begin(), isNear),
                         qPrintable(name));
            }
        }
    }

    // Twenty channels that claim what no log of three kilobytes holds, each within what is believed of one.
    void hostileShortLog()
    {
        std::vector<LdWriter::Channel> channels{channel("lapdistpct", {}), channel("lap", {})};
        for (int i = 0; i < 18; ++i)
            channels.push_back(channel(QByteArray::number(i), {}));
        for (LdWriter::Channel &entry : channels)
            entry.header.sampleCount = static_cast<quint32>(ldSampleAllowance(0) / 12);
        rusage before{};
        rusage after{};
        getrusage(RUSAGE_SELF, &before);
        QVERIFY(!loadLaps(files.write(u"short.ld"_s, LdWriter::log(channels))).isEmpty());
        getrusage(RUSAGE_SELF, &after);
        QVERIFY(isSanitized || after.ru_maxrss - before.ru_maxrss < 128L * 1024);
    }

    // Logs of 1 MiB, and their first 64 bytes. All channels claim the same bytes, which are not there; a counter that
    // rises at each sample has its own. The process must stay below 512 MiB; its peak is read from the kernel.
    void hostileLogs()
    {
        const qint64 all = ldSampleAllowance(1 << 20);
        // How many samples, at which rate, and whether the counter rises.
        const std::tuple<qint64, quint16, bool> rows[]{
            {4294967295, 60, false}, {all / 83, 60, false}, {all / 70, 1, false}, {all / 123, 1, false},
            {all, 65535, false},     {10, 60, false},       {32000, 60, true},    {3000, 1, true}};
        for (const auto &[count, rate, isRising] : rows) {
            std::vector<LdWriter::Channel> channels{channel("lapdistpct", {}), channel("lap", {})};
            for (std::size_t i = 2; i < (1 << 20) / sizeof(LdChannelHeader); ++i)
                channels.push_back(channel(QByteArray::number(i), {}));
            for (LdWriter::Channel &entry : channels) {
                entry.header.sampleCount = static_cast<quint32>(count);
                entry.header.sampleRate = rate;
            }
            std::vector<qint16> rising(isRising ? static_cast<std::size_t>(count) : 0);
            std::iota(rising.begin(), rising.end(), qint16{0});
            channels[1].samples = LdWriter::raw(rising);
            const QByteArray file = LdWriter::log(channels);
            for (const qsizetype length : {qsizetype{64}, file.size()})
                loadLaps(files.write(u"log.ld"_s, file.first(length)));
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            QVERIFY2(isSanitized || usage.ru_maxrss < 512L * 1024, QByteArray::number(usage.ru_maxrss).constData());
        }
    }
};

QTEST_APPLESS_MAIN(TestLoadLaps)
#include "tst_loadlaps.moc"
