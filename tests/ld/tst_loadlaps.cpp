#include "ldwriter.h"
#include "testing.h"

#include "ld/lapcutter.h"
#include "ld/ldfile.h"
#include "ld/loadlaps.h"
#include "ld/resample.h"

#include <numeric>
#include <sys/resource.h>

using namespace Testing;
using KOV::SDK::Session;
using LdWriter::Channel;
using LdWriter::channel;

namespace {

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

} // namespace

class TestLoadLaps : public QObject
{
    Q_OBJECT

    Laps load(const QByteArray &file) const { return loadLaps(files.write(u"log.ld"_s, file)); }

    Files files;

private Q_SLOTS:
    void headTextsReachEveryLap()
    {
        const std::pair<QByteArray, Session> sessions[]{
            {"Race", Session::Race},       {"Offline testing", Session::TestSession}, {"Test", Session::TestSession},
            {"Qualify", Session::Qualify}, {"Practice", Session::Practice},           {"Warmup", Session::Warmup},
            {"", Session::UnknownSession}, {"race", Session::UnknownSession}};
        for (const auto &[word, session] : sessions) {
            LdHeadBlock head;
            LdWriter::setText(head.sessionText, word);
            LdWriter::setText(head.driverText, "J\xC3\xB6rg");
            LdWriter::setText(head.vehicleText, word);
            LdWriter::setText(head.venueText, "Spa");
            const Laps laps = load(LdWriter::log(drivingChannels(), head));
            QCOMPARE(laps.size(), 2);
            QVERIFY(areSound(laps));
            for (const auto &lap : laps) {
                QCOMPARE(lap->header().session, session);
                QCOMPARE(lap->header().carInfo.driverName, u"J\u00F6rg"_s);
                QCOMPARE(lap->header().carInfo.carName, QString::fromUtf8(word));
                QCOMPARE(lap->header().venueName, u"Spa"_s);
                QVERIFY(lap->header().dynamicData.isEmpty());
            }
            QVERIFY(sameSamples(*laps[0], "lapdistpct", {0.0, 50 * 0.01, 99 * 0.01}));
        }
    }

    void firstChannelWithSamplesWins()
    {
        std::vector<Channel> channels = drivingChannels();
        channels[1].header.name[0] = 'L';
        Channel unreadable = channel("Speed", {9, 9, 9});
        unreadable.header.sampleWidth = 1;
        channels.insert(channels.end(),
                        {channel("SPEED", {}), unreadable, channel("speed", {1, 2, 3, 4, 5, 6, 7}, "km/h"),
                         channel("Speed", {8, 8, 8, 8, 8, 8, 8}, "mph"), channel("lap", {3, 3, 3, 3, 3, 3, 3}),
                         channel("", {2, 2, 2, 2, 2, 2, 2}), channel(" a B ", {4, 4, 4, 4, 4, 4, 4})});
        const QByteArray file = LdWriter::log(channels);
        const Laps laps = load(file);
        QCOMPARE(laps.size(), 2);
        QVERIFY(sameSamples(*laps[0], "speed", {1, 2, 3}));
        QCOMPARE(laps[0]->channel(u"speed"_s)->unit(), u"km/h"_s);
        QVERIFY(sameSamples(*laps[1], "", {2, 2, 2}));
        QVERIFY(sameSamples(*laps[1], " a b ", {4, 4, 4}));
        QVERIFY(sameLaps(laps, stepByStep(file)));
    }

    void mixedRatesAsByPublicSteps()
    {
        constexpr int seconds = 90;
        std::vector<Channel> channels;
        // Values by a function of their index, for the whole length of the log.
        const auto add = [&channels](const QByteArray &name, const QByteArray &unit, int rate, auto valueAt) {
            std::vector<qint16> values(static_cast<std::size_t>(seconds * rate));
            for (int i = 0; i < seconds * rate; ++i)
                values[static_cast<std::size_t>(i)] = static_cast<qint16>(valueAt(i));
            channels.push_back(channel(name, values, unit, static_cast<quint16>(rate), 2));
        };
        for (const int rate : {1, 10, 20, 50, 60, 100, 360, 500, 1000}) {
            const QByteArray number = QByteArray::number(rate);
            add("c" + number, "u" + number, rate, [rate](int i) { return i * 37 % (rate + 999); });
        }
        add("Lap", {}, 1, [](int i) { return i / 30 * 100; });
        add("LapDistPct", "%", 100, [](int i) { return i % 3000 * 10 / 3; });
        add("lapcurrentlaptime", "s", 10, [](int i) { return (i + 1) % 300 * 100; });
        add("laplastlaptime", "s", 10, [](int i) { return (i + 1) % 300 * 100; });
        const QByteArray file = LdWriter::log(channels);
        const Laps laps = load(file);
        QCOMPARE(laps.size(), 3 + 2 * 59);
        QVERIFY(laps.first()->header().lapTime.isValid());
        QVERIFY(sameLaps(laps, stepByStep(file)));
    }

    void whatIsNoLog()
    {
        for (const QByteArray &file : {QByteArray(), "Format,CSV\r\n"_ba.repeated(500), LdWriter::log({}),
                                       LdWriter::log({drivingChannels()[0]})})
            QVERIFY(load(file).isEmpty());
    }

    void hostileLogs_data()
    {
        const Table<QByteArray> table("file");
        // All records lie behind each other and claim the same bytes.
        const auto row = [&table](const char *name, qsizetype fileBytes, quint32 count, quint16 rate, bool isRising) {
            std::vector<Channel> channels = drivingChannels();
            const qsizetype room = (fileBytes - qsizetype{sizeof(LdHeadBlock)}) / qsizetype{sizeof(LdChannelHeader)};
            for (qsizetype i = 2; i < room; ++i)
                channels.push_back(channel("c" + QByteArray::number(i), {}));
            for (Channel &entry : channels) {
                entry.samples.clear();
                entry.header.sampleCount = count;
                entry.header.sampleRate = rate;
            }
            QByteArray file = LdWriter::log(channels);
            file.resize(fileBytes, '\0');
            if (isRising) { // the counter has samples of its own at the end of the file
                std::vector<qint16> rising(count);
                std::iota(rising.begin(), rising.end(), qint16{0});
                const QByteArray bytes = LdWriter::raw(rising);
                const qsizetype at = fileBytes - bytes.size();
                file.replace(at, bytes.size(), bytes);
                LdWriter::put(file, qsizetype{sizeof(LdHeadBlock)} + 124 + 8,
                              LdInteger<quint32>(static_cast<quint32>(at)));
            }
            table(name, file);
        };
        constexpr qsizetype mebibyte = 1 << 20;
        row("four billion samples", mebibyte, 4294967295U, 60, false);
        row("the same bytes for all", mebibyte, 500000, 60, false);
        row("one per second", mebibyte, 600000, 1, false);
        row("two long channels at one per second", mebibyte, 340000, 1, false);
        row("highest rate", mebibyte, 40U << 20, 65535, false);
        row("short channels", mebibyte, 10, 60, false);
        row("a lap of every sample", mebibyte, 32000, 60, true);
        row("ramps of laps", mebibyte, 3000, 1, true);
        row("64 bytes", 64, 4294967295U, 1, false);
        QByteArray tiny(64, '\0');
        LdWriter::put(tiny, 8, LdInteger<quint32>(8U));
        table("64 bytes onto themselves", tiny);
    }
    // The process must stay below 512 MiB over all rows; its peak is read from the kernel.
    void hostileLogs()
    {
        QFETCH(QByteArray, file);
        load(file);
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        qInfo("%ld KiB at most so far", usage.ru_maxrss);
        QVERIFY(isSanitized || usage.ru_maxrss < 512L * 1024);
    }

    void absurdRecordIsPassedOver()
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
};

QTEST_APPLESS_MAIN(TestLoadLaps)
#include "tst_loadlaps.moc"
