// From the path of a binary log to its laps; compared with the text import; and what a log may cost.

#include "ldwriter.h"
#include "testing.h"

#include "csv/orvareader.h"
#include "ld/lapcutter.h"
#include "ld/loadlaps.h"
#include "ld/resample.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <malloc.h>
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

    // One simulated drive was written in both formats; both imports must agree on its complete laps.
    void sameAsTextExport()
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
            QVERIFY(other.dynamicData.isEmpty() && !other.venueName.isEmpty()); // the sidecar is not read
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

    // An honest log gives what the public steps give, however slow its channels are: nothing is left out.
    void sameAsSteps_data()
    {
        const Table<quint16, int, int> row("rate", "seconds", "lapSeconds");
        row("1 per second", 1, 7200, 30);
        row("2 per second", 2, 3600, 30);
        row("10 per second", 10, 600, 45);
        row("60 per second", 60, 300, 45);
    }
    void sameAsSteps()
    {
        QFETCH(quint16, rate);
        QFETCH(int, seconds);
        QFETCH(int, lapSeconds);
        std::vector<qint16> laps;
        std::vector<qint16> times;
        for (int i = 0; i < rate * seconds; ++i) {
            laps.push_back(static_cast<qint16>(i / (rate * lapSeconds)));
            times.push_back(static_cast<qint16>(i % (rate * lapSeconds)));
        }
        std::vector<LdWriter::Channel> channels{channel("Lap", laps, {}, rate), channel("lapdistpct", times, "%", rate),
                                                channel("lapcurrentlaptime", times, "s", rate),
                                                channel("laplastlaptime", laps, "s", rate)};
        while (channels.size() < 20)
            channels.push_back(channel(QByteArray::number(channels.size()), times, "m", rate));
        QFile file(files.write(u"honest.ld"_s, LdWriter::log(channels)));
        LdLoadReport report;
        const Laps loaded = loadLaps(file.fileName(), &report);
        QVERIFY(report.leftOut.isEmpty() && areSound(loaded) && !loaded.isEmpty());

        QVERIFY(file.open(QIODevice::ReadOnly));
        QDataStream stream(&file);
        LdData data = readLd(stream);
        QMap<QString, LdChannelHeader> headers;
        QMap<QString, std::vector<float>> samples;
        for (const LdChannelHeader &header : readLdChannelHeaders(stream, data)) {
            const QString name = ldText(header, &LdChannelHeader::name).toLower();
            headers[name] = header;
            samples[name] = readLdChannel(stream, header);
            if (rate != ldCommonRate)
                samples[name] = resample(samples[name], rate, ldCommonRate);
        }
        const Laps cut = cutLaps(headers, samples);
        QCOMPARE(loaded.size(), cut.size());
        QVERIFY(loaded[0]->header().stintId != cut[0]->header().stintId);
        QVERIFY(loaded[0]->header().sessionId != cut[0]->header().sessionId);
        for (qsizetype i = 0; i < cut.size(); ++i) {
            QCOMPARE(loaded[i]->header().lapTime, cut[i]->header().lapTime);
            QCOMPARE(loaded[i]->header().lapNumber, cut[i]->header().lapNumber);
            QCOMPARE(loaded[i]->getAvailableRecordedChannels(), headers.keys());
            for (const QString &name : headers.keys())
                QVERIFY(std::ranges::equal(loaded[i]->channel(name)->samples(), cut[i]->channel(name)->samples(),
                                           sameBits));
        }
    }

    // Logs of 1 MiB, and their heads with a few records. All channels declare the same bytes, which are not there; a
    // counter that rises at each sample has its own. No log may take more than 512 MiB; the kernel reports the peak.
    void hostileLogs()
    {
        // How many channels and samples, at which rate, and whether the counter rises.
        const std::tuple<std::size_t, qint64, quint16, bool> rows[]{
            {8000, 4294967295, 60, false}, {8000, 5000, 60, false}, {8000, 10, 60, false},
            {20, 20000000, 60, false},     {20, 700000, 1, false},  {20, 340000, 1, false},
            {20, 60000000, 65535, false},  {150, 32000, 60, true},  {20, 3000, 1, true},
            {20, 5900, 1, true},           {20, 32000, 1, true}};
        for (const auto &[channelCount, count, rate, isRising] : rows) {
            std::vector<LdWriter::Channel> channels{channel("lapdistpct", {}), channel("lap", {})};
            while (channels.size() < channelCount)
                channels.push_back(channel(QByteArray::number(channels.size()), {}));
            for (LdWriter::Channel &entry : channels) {
                entry.header.sampleCount = static_cast<quint32>(count);
                entry.header.sampleRate = rate;
            }
            std::vector<qint16> rising(isRising ? static_cast<std::size_t>(count) : 0);
            std::iota(rising.begin(), rising.end(), qint16{0});
            channels[1].samples = LdWriter::raw(rising);
            const QByteArray file = LdWriter::log(channels);
            for (const qsizetype length : {qsizetype{4096}, file.size()}) {
                loadLaps(files.write(u"log.ld"_s, file.first(length)));
                malloc_trim(0); // the heap's holes are not the next log's
            }
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            QVERIFY2(!isMemoryOurs || usage.ru_maxrss < 512L * 1024, QByteArray::number(usage.ru_maxrss).constData());
        }
    }
};

QTEST_APPLESS_MAIN(TestLoadLaps)
#include "tst_loadlaps.moc"
