#include "ldwriter.h"
#include "testing.h"

#include "ld/lapcutter.h"
#include "ld/ldfile.h"
#include "ld/loadlaps.h"
#include "ld/resample.h"

#include <ctime>
#include <sys/resource.h>

using KOV::SDK::Lap;
using KOV::SDK::Session;
using LdWriter::Channel;
using LdWriter::channel;
using Testing::sameSamples;

namespace {

using Laps = QList<QSharedPointer<Lap>>;

// Two channels that make two laps of three samples.
std::vector<Channel> drivingChannels()
{
    return {channel("lapdistpct", {0, 50, 99, 0, 50, 99, 0}, "%"), channel("lap", {1, 1, 1, 2, 2, 2, 2})};
}

// The road by its public steps, for a log of any content that is not absurd.
Laps stepByStep(const QByteArray &file)
{
    QDataStream stream(file);
    LdData data = readLd(stream);
    const auto headers = readLdChannelHeaders(stream, data);
    const auto channels = readLdChannels(stream, headers);
    QMap<QString, LdChannelHeader> headerMap;
    QMap<QString, std::vector<float>> sampleMap;
    for (std::size_t k = 0; k < headers.size(); ++k) {
        const QString key = ldText(headers[k].name).toLower();
        const int rate = headers[k].sampleRate;
        if (!headerMap.contains(key) && !channels[k].empty()) {
            headerMap.insert(key, headers[k]);
            sampleMap.insert(key, rate == 60 ? channels[k] : resample(channels[k], rate, 60));
        }
    }
    return cutLaps(headerMap, sampleMap);
}

bool sameLaps(const Laps &actual, const Laps &expected)
{
    bool same = actual.size() == expected.size();
    for (qsizetype i = 0; same && i < actual.size(); ++i) {
        const QList<QString> names = expected[i]->getAvailableRecordedChannels();
        same = actual[i]->getAvailableRecordedChannels() == names &&
               actual[i]->header().lapTime == expected[i]->header().lapTime &&
               actual[i]->header().lapNumber == expected[i]->header().lapNumber;
        for (const QString &name : names) {
            const auto samples = expected[i]->channel(name)->samples();
            same = same && sameSamples(*actual[i], qPrintable(name), {samples.begin(), samples.end()}) &&
                   actual[i]->channel(name)->unit() == expected[i]->channel(name)->unit();
        }
    }
    return same;
}

QByteArray number(qsizetype value)
{
    return QByteArray::number(value);
}

} // namespace

class TestLoadLaps : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headTextsReachEveryLap_data();
    void headTextsReachEveryLap();
    void firstChannelWithSamplesWins();
    void mixedRatesAsByPublicSteps();
    void whatIsNoLog_data();
    void whatIsNoLog();
    void cutAtEveryByte();
    void hostileLogs_data();
    void hostileLogs();
    void absurdRecordIsPassedOver();

private:
    Laps load(const QByteArray &file) const { return loadLaps(files.write(QStringLiteral("log.ld"), file)); }

    Testing::Files files;
};

void TestLoadLaps::headTextsReachEveryLap_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<Session>("session");
    QTest::newRow("race") << QByteArray("Race") << Session::Race;
    QTest::newRow("unknown word") << QByteArray("race") << Session::UnknownSession;
    QTest::newRow("no word") << QByteArray() << Session::UnknownSession;
}

void TestLoadLaps::headTextsReachEveryLap()
{
    QFETCH(QByteArray, word);
    LdHeadBlock head;
    LdWriter::setText(head.sessionText, word);
    LdWriter::setText(head.driverText, "J\xC3\xB6rg");
    LdWriter::setText(head.vehicleText, word);
    LdWriter::setText(head.venueText, "Spa");
    const Laps laps = load(LdWriter::log(drivingChannels(), head));
    QCOMPARE(laps.size(), 2);
    for (const auto &lap : laps) {
        QTEST(lap->header().session, "session");
        QCOMPARE(lap->header().carInfo.driverName, QStringLiteral(u"J\u00F6rg"));
        QCOMPARE(lap->header().carInfo.carName, QString::fromUtf8(word));
        QCOMPARE(lap->header().venueName, QStringLiteral("Spa"));
        QVERIFY(lap->header().dynamicData.isEmpty());
    }
    QVERIFY(sameSamples(*laps[0], "lapdistpct", {0.0, 50 * 0.01, 99 * 0.01}));
}

void TestLoadLaps::firstChannelWithSamplesWins()
{
    std::vector<Channel> channels = drivingChannels();
    channels[1].header.name[0] = 'L';
    Channel unreadable = channel("Speed", {9, 9, 9});
    unreadable.header.sampleWidth = 1;
    channels.push_back(channel("SPEED", {}));
    channels.push_back(unreadable);
    channels.push_back(channel("speed", {1, 2, 3, 4, 5, 6, 7}, "km/h"));
    channels.push_back(channel("Speed", {8, 8, 8, 8, 8, 8, 8}, "mph"));
    channels.push_back(channel("lap", {3, 3, 3, 3, 3, 3, 3}));
    channels.push_back(channel("", {2, 2, 2, 2, 2, 2, 2}));
    channels.push_back(channel(" a B ", {4, 4, 4, 4, 4, 4, 4}));
    const QByteArray file = LdWriter::log(channels);
    const Laps laps = load(file);
    QCOMPARE(laps.size(), 2);
    QVERIFY(sameSamples(*laps[0], "speed", {1, 2, 3}));
    QCOMPARE(laps[0]->channel(QStringLiteral("speed"))->unit(), QStringLiteral("km/h"));
    QVERIFY(sameSamples(*laps[1], "", {2, 2, 2}));
    QVERIFY(sameSamples(*laps[1], " a b ", {4, 4, 4}));
    QVERIFY(sameLaps(laps, stepByStep(file)));
}

void TestLoadLaps::mixedRatesAsByPublicSteps()
{
    constexpr int seconds = 90;
    std::vector<Channel> channels;
    for (int rate : {1, 10, 20, 50, 60, 100, 360, 500, 1000}) {
        std::vector<qint16> values(static_cast<std::size_t>(seconds * rate));
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<qint16>(static_cast<int>(i) * 37 % (rate + 999));
        channels.push_back(channel("c" + number(rate), values, "u" + number(rate), static_cast<quint16>(rate), 2));
    }
    std::vector<qint16> lap(seconds);
    std::vector<qint16> distance(seconds * 100);
    std::vector<qint16> current(seconds * 10);
    for (std::size_t i = 0; i < distance.size(); ++i) {
        lap[i / 100] = static_cast<qint16>(i / 3000);
        distance[i] = static_cast<qint16>(i % 3000 * 10 / 3);
        current[i / 10] = static_cast<qint16>((i / 10 + 1) % 300);
    }
    channels.push_back(channel("Lap", lap, {}, 1));
    channels.push_back(channel("LapDistPct", distance, "%", 100, 2));
    channels.push_back(channel("lapcurrentlaptime", current, "s", 10));
    channels.push_back(channel("laplastlaptime", current, "s", 10));
    const QByteArray file = LdWriter::log(channels);
    const Laps laps = load(file);
    QCOMPARE(laps.size(), 3 + 2 * 59);
    QVERIFY(laps.first()->header().lapTime.isValid());
    QVERIFY(sameLaps(laps, stepByStep(file)));
}

void TestLoadLaps::whatIsNoLog_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << files.path(QStringLiteral("missing.ld"));
    QTest::newRow("folder") << files.path(QString());
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("empty") << files.write(QStringLiteral("empty.ld"), {});
    QTest::newRow("text") << files.write(QStringLiteral("text.ld"), QByteArray("Format,CSV\r\n").repeated(500));
    QTest::newRow("head alone") << files.write(QStringLiteral("head.ld"), LdWriter::log({}));
    QTest::newRow("no lap") << files.write(QStringLiteral("nolap.ld"), LdWriter::log({drivingChannels()[0]}));
}

void TestLoadLaps::whatIsNoLog()
{
    QFETCH(QString, path);
    QVERIFY(loadLaps(path).isEmpty());
}

void TestLoadLaps::cutAtEveryByte()
{
    const QByteArray file = LdWriter::log(drivingChannels());
    const qsizetype samplesBegin = file.size() - 28;
    constexpr qsizetype headStep = 50; // a head without its end leads nowhere
    for (qsizetype size = 0; size <= file.size(); size += size < qsizetype{sizeof(LdHeadBlock)} ? headStep : 1) {
        const Laps laps = load(file.first(size));
        if (size < samplesBegin)
            continue;
        QVERIFY(!laps.isEmpty());
        long long samples = 0;
        for (const auto &lap : laps)
            samples += lap->size();
        QCOMPARE(samples, 6);
    }
}

void TestLoadLaps::hostileLogs_data()
{
    QTest::addColumn<QByteArray>("file");
    // All records lie behind each other and claim the same bytes.
    const auto add = [](const char *name, qsizetype fileBytes, quint32 count, quint16 rate, bool risingCounter) {
        LdHeadBlock head;
        std::vector<Channel> channels = drivingChannels();
        const qsizetype room = (fileBytes - qsizetype{sizeof head}) / qsizetype{sizeof(LdChannelHeader)};
        for (qsizetype i = 2; i < room; ++i)
            channels.push_back(channel("c" + number(i), {}));
        for (Channel &entry : channels) {
            entry.samples.clear();
            entry.header.sampleCount = count;
            entry.header.sampleRate = rate;
        }
        QByteArray file = LdWriter::log(channels, head);
        file.resize(fileBytes, '\0');
        if (risingCounter) {
            const auto values = static_cast<qint16>(std::min(count, 32767U));
            std::vector<qint16> rising;
            for (qint16 i = 0; i < values; ++i)
                rising.push_back(i);
            const QByteArray bytes = LdWriter::raw(rising);
            const qsizetype at = fileBytes - bytes.size();
            file.replace(at, bytes.size(), bytes);
            LdWriter::put(file, qsizetype{sizeof head} + 124 + 8, LdInteger<quint32>(static_cast<quint32>(at)));
        }
        QTest::newRow(name) << file;
    };
    constexpr qsizetype mebibyte = 1 << 20;
    add("four billion samples", mebibyte, 4294967295U, 60, false);
    add("the same bytes for all", mebibyte, 500000, 60, false);
    add("one per second", mebibyte, 600000, 1, false);
    add("two long channels at one per second", mebibyte, 340000, 1, false);
    add("highest rate", mebibyte, 40 << 20, 65535, false);
    add("short channels", mebibyte, 10, 60, false);
    add("a lap of every sample", mebibyte, 32000, 60, true);
    add("ramps of laps", mebibyte, 3000, 1, true);
    add("64 bytes", 64, 4294967295U, 1, false);
    QByteArray tiny(64, '\0');
    LdWriter::put(tiny, 8, LdInteger<quint32>(8U));
    QTest::newRow("64 bytes onto themselves") << tiny;
}

// The process must stay below 512 MiB over all rows; its peak is read from the kernel.
void TestLoadLaps::hostileLogs()
{
    QFETCH(QByteArray, file);
    const QString path = files.write(QStringLiteral("hostile.ld"), file);
    const std::clock_t begin = std::clock(); // counts this process only, however busy the machine is
    loadLaps(path);
    const std::clock_t used = std::clock() - begin;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    qInfo("%ld ms, %ld KiB at most so far", used * 1000 / CLOCKS_PER_SEC, usage.ru_maxrss);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    QVERIFY(used < 2 * CLOCKS_PER_SEC);
    QVERIFY(usage.ru_maxrss < 512 * 1024);
#endif
}

void TestLoadLaps::absurdRecordIsPassedOver()
{
    std::vector<Channel> channels = drivingChannels();
    Channel absurd = channel("speed", {1, 2, 3});
    absurd.header.sampleCount = 4000000000U;
    channels.push_back(absurd);
    channels.push_back(channel("speed", {4, 5, 6, 7, 8, 9, 9}));
    absurd.header = LdWriter::record("lap");
    absurd.header.sampleCount = 4000000000U;
    channels.insert(channels.begin(), absurd);
    const Laps laps = load(LdWriter::log(channels));
    QCOMPARE(laps.size(), 2);
    QVERIFY(sameSamples(*laps[1], "speed", {7, 8, 9}));
}

QTEST_APPLESS_MAIN(TestLoadLaps)
#include "tst_loadlaps.moc"
