#include "testing.h"

#include "csv/orvareader.h"

#include <QtTest/QSignalSpy>

using namespace KOV::SDK;
using namespace Testing;
using Doubles = std::vector<double>;

namespace {

constexpr double none = invalidValue;
const QTime placeholder(0, 59, 59);

} // namespace

class TestOrvaReader : public QObject
{
    Q_OBJECT

    Laps import(const QByteArray &content, const QString &name = u"log.csv"_s)
    {
        ORVAReader reader(nullptr);
        QSignalSpy messages(&reader, &ORVAReader::message);
        Laps laps = reader.importLaps(files.write(name, content));
        if (messages.size() != 1 || messages[0] != QVariantList{u"Done; Laps read %1"_s.arg(laps.size()), 0})
            qFatal("not the one closing message");
        if (!areSound(laps))
            qFatal("headers or channels that do not go together");
        return laps;
    }
    Laps importRows(const QByteArray &names, const QByteArray &rows, const QByteArray &header = "Venue,V\n")
    {
        return import(header + "\n" + names + "\n,\n\n" + rows);
    }

    Files files;

private Q_SLOTS:
    void blocks_data()
    {
        const Table<QByteArray, Doubles> row("content", "a");
        row("plain", "K,v\n\na,b\nm,s\n\n1,2\n3,4\n", {1, 3});
        row("no header", "\na\nm\n\n1\n", {1});
        row("blank lines before the names", "K,v\n\n\n\n\na\nm\n\n1\n", {1});
        row("no separator", "K,v\n\na\nm\n1\n2\n", {2});
        row("empty unit row", "K,v\n\na\n\n\n1\n", {1});
        row("two empty lines behind the units", "K,v\n\n\na\nm\n\n\n1\n", {1});
        row("CR LF", "K,v\r\n\r\na\r\nm\r\n\r\n1\r\n2", {1, 2});
        row("quoted", "\"K\",\"v\"\n\n\"a\"\n\"m\"\n\n\"1,5\"\n\"-2\"\n\"\"\n\"2.5\"\n", {1.5, -2, 0});
        row("a line of blanks is a row", "K,v\n\na\nm\n\n1\n \n", {1, 0});
        row("names lose case, blanks and minus signs", "K,v\n\n A - \nm\n\n1\n", {1});
        row("a blank line is none in the header", "K,v\n \n\na\nm\n\n1\n", {1});
    }
    void blocks()
    {
        QFETCH(QByteArray, content);
        QFETCH(Doubles, a);
        const Laps laps = import(content);
        QCOMPARE(laps.size(), 1);
        QVERIFY(sameSamples(*laps[0], "a", a));
        QVERIFY(sameSamples(*laps[0], "lapdistpct", Doubles(a.size(), 0.0)));
        QCOMPARE(laps[0]->header().lapTime, placeholder);
    }

    void headerRows_data()
    {
        const Table<QByteArray, QString, QString, QString> row("header", "venue", "vehicle", "driver");
        row("all", "Venue,Ring\nVehicle,Car\nDriver,Ann\n", u"Ring"_s, u"Car"_s, u"Ann"_s);
        row("quoted, with a second pair", "\"Venue\",\"Ring\",,,\"Vehicle\",\"no\"\n\"Driver\",\" Ann \"\n", u"Ring"_s,
            {}, u" Ann "_s);
        row("cut at a comma", "\"Venue\",\"Ring, North\"\n", u"Ring"_s, {}, {});
        row("the later counts, also empty", "Venue,A\nVenue,B\nDriver,A\nDriver,\n", u"B"_s, {}, {});
        row("exact keys", "venue,A\n Venue,B\nVenue\nVenues,C\n", {}, {}, {});
        row("UTF-8", "Venue,Sp\xC3\xA4\n", u"Sp\u00E4"_s, {}, {});
    }
    void headerRows()
    {
        QFETCH(QByteArray, header);
        const Laps laps = importRows("a", "1\n", header);
        QTEST(laps[0]->header().venueName, "venue");
        QTEST(laps[0]->header().carInfo.carName, "vehicle");
        QTEST(laps[0]->header().carInfo.driverName, "driver");
    }

    void lapCuts_data()
    {
        const Table<QByteArray, QList<int>> row("rows", "sizes");
        row("98 to 2", "97\n98\n2\n3\n", {2, 2});
        row("100 to 25 is exactly three quarters", "100\n25\n", {2});
        row("just over", "100\n24.99\n", {1, 1});
        row("50 to 0", "50\n0\n", {2});
        row("starts at 90", "90\n95\n1\n", {2, 1});
        row("NaN hides a fall", "98\nnan\n2\n", {3});
        row("two cuts running", "99\n1\n99\n1\n2\n", {1, 2, 2});
        row("fractions never cut", "0.98\n0.02\n", {2});
        row("no number is zero", "98\nx\n", {1, 1});
    }
    void lapCuts()
    {
        QFETCH(QByteArray, rows);
        QList<int> sizes;
        for (const auto &lap : importRows("LapDistPct", rows))
            sizes.append(static_cast<int>(lap->size()));
        QTEST(sizes, "sizes");
    }

    void headersOfLaps()
    {
        const Laps laps = importRows("Lap Dist Pct,Lap Number", "90,7\n98,7\n2,8\n99,8.6\n1,12\n");
        QCOMPARE(laps.size(), 3);
        const QList<int> numbers{0, 8, 12};
        for (int i = 0; i < 3; ++i) {
            const LapHeader &header = laps[i]->header();
            QCOMPARE(header.lapNumber, numbers[i]);
            QVERIFY(i == 2 ? header.lapTime == placeholder : !header.lapTime.isValid());
            QVERIFY(header.venueName == u"V" && !header.dateTime.isValid());
        }
        QVERIFY(sameSamples(*laps[1], "lapdistpct", {2 * 0.01, 99 * 0.01}));
        QVERIFY(sameSamples(*laps[1], "lapnumber", {8, 8.6}));
        QCOMPARE(laps[1]->channel(u"lapdistpct"_s)->unit(), u"pu"_s);
    }

    void rowsOfOddLength()
    {
        // Short rows, rows of too many fields and laps that begin with either, among rows of the full width.
        const Laps laps =
            importRows("lapdistpct,b,c", "1\n2,20,30\n3,21\n98,22,32,99\n2,40,50\n3,41,51\n4\n5,42,52,7,7\n");
        QCOMPARE(laps.size(), 2);
        QVERIFY(sameSamples(*laps[0], "lapdistpct", {0.01, 0.02, 3 * 0.01, 98 * 0.01}));
        QVERIFY(sameSamples(*laps[0], "b", {none, 20, 21, 22}));
        QVERIFY(sameSamples(*laps[0], "c", {none, 30, none, 32}));
        QVERIFY(sameSamples(*laps[1], "b", {40, 41, none, 42}));
        QVERIFY(sameSamples(*laps[1], "c", {50, 51, none, 52}));
        QCOMPARE(laps[0]->getAvailableRecordedChannels().size(), 3);

        const Laps shortDistance = importRows("a,lapdistpct", "1,98\n2\n3,2\n");
        QCOMPARE(shortDistance.size(), 2); // the missing distance of the second row counts as 0
        QVERIFY(sameSamples(*shortDistance[1], "lapdistpct", {0.0, 0.02}));
    }

    void manyRows()
    {
        QByteArray rows;
        Doubles distances;
        Doubles values;
        for (int i = 0; i < 1400; ++i) {
            rows += QByteArray::number(i % 70) + "," + QByteArray::number(i * 10) + "\n";
            distances.push_back(i % 70 * 0.01);
            values.push_back(i * 10);
        }
        const Laps laps = importRows("lapdistpct,x", rows);
        QCOMPARE(laps.size(), 1);
        QVERIFY(sameSamples(*laps[0], "lapdistpct", distances));
        QVERIFY(sameSamples(*laps[0], "x", values));
    }

    void repeatedNames()
    {
        const Laps laps = importRows("Time,a,T-ime,", "1,2,3,4\n5,6,7,8\n9\n10,11,12,13\n");
        QVERIFY(sameSamples(*laps[0], "time", {3, 7, 9, 12})); // a short row has the earlier column only
        QVERIFY(sameSamples(*laps[0], "", {4, 8, none, 13}));
        QCOMPARE(laps[0]->getAvailableRecordedChannels().size(), 4);
        QCOMPARE(importRows("lapdistpct,LapDistPct", "0,98\n98,2\n").size(), 2); // the last column of the name counts
    }

    void units()
    {
        const Laps laps = import("\nlapdistpct,a,b,a,c\n%,m,..,s\n\n1,2,3,4,5\n");
        const auto unit = [](const auto &lap, const QString &name) { return lap->channel(name)->unit(); };
        QCOMPARE(unit(laps[0], u"lapdistpct"_s), u"pu"_s);
        QCOMPARE(unit(laps[0], u"a"_s), u"s"_s);
        QCOMPARE(unit(laps[0], u"b"_s), u".."_s);
        QVERIFY(unit(laps[0], u"c"_s).isNull());
        const Laps emptyRow = import("\na,b\n\n\n1,2\n");
        QVERIFY(!unit(emptyRow[0], u"a"_s).isNull() && unit(emptyRow[0], u"b"_s).isNull());
    }

    void decimation_data()
    {
        const Table<QByteArray, bool> row("header", "isDecimated");
        row("360", "Sample Rate,360\n", true);
        row("360.000 quoted", "\"Sample Rate\",\"360,000\",\"Hz\"\n", true);
        row("13600", "Sample Rate,13600\n", true);
        row("60", "Sample Rate,60,360\n", false);
        row("the later counts", "Sample Rate,360\nSample Rate,60\n", false);
        row("none", "Rate,360\n", false);
    }
    void decimation()
    {
        QFETCH(QByteArray, header);
        QFETCH(bool, isDecimated);
        QByteArray rows;
        for (int i = 0; i < 20; ++i)
            rows += QByteArray::number(i) + (i % 4 == 3 ? "\n\n\"\"\n" : "\n"); // empty rows do not count
        const Laps laps = importRows("a", rows, header);
        QVERIFY(isDecimated ? sameSamples(*laps[0], "a", {0, 6, 12, 18}) : laps[0]->size() == 20);
    }

    void lapTimes_data()
    {
        const Table<QByteArray, QTime> row("nextLap", "lapTime"); // the next lap's "laplastlaptime"
        row("fraction is cut", "0 92.3456", QTime(0, 1, 32, 345));
        row("the last positive counts", "80 92.5 0 -1", QTime(0, 1, 32, 500));
        row("invalid ones are passed over", "92.5 1e25 nan inf", QTime(0, 1, 32, 500));
        row("none", "0 -3 nan", placeholder);
        row("below a millisecond", "0.0009", placeholder);
        row("a day and a second wraps", "86401", QTime(0, 0, 1));
        row("a day is no time", "86400", placeholder);
        row("beyond an int", "1e20", QTime(0, 0).addMSecs(std::numeric_limits<int>::max()));
    }
    void lapTimes()
    {
        QFETCH(QByteArray, nextLap);
        const Laps laps = importRows("lapdistpct,laplastlaptime", "98,50\n1," + nextLap.replace(" ", "\n1,") + "\n");
        QCOMPARE(laps.size(), 2);
        QTEST(laps[0]->header().lapTime, "lapTime");
        QCOMPARE(laps[1]->header().lapTime, placeholder);
    }

    void clockRepair()
    {
        const double distance = 0.3 * 0.01;
        const Doubles repaired{0.1 * (0.1 * 0.01) / distance, 0.1 * (0.2 * 0.01) / distance, 0.1, 0.2, 0.3};
        const Doubles untouched{95.2, 95.3, 0.1, 0.2, 0.3};
        const QByteArray lap = "0.1,95.2,0\n0.2,95.3,0\n0.3,0.1,0\n0.4,0.2,0\n99,0.3,0\n";
        for (const bool hasLastTimes : {true, false}) {
            const QByteArray names = "lapdistpct,lapcurrentlaptime,"_ba + (hasLastTimes ? "laplastlaptime" : "other");
            const Laps laps = importRows(names, lap + lap);
            QCOMPARE(laps.size(), 2);
            QVERIFY(sameSamples(*laps[0], "lapcurrentlaptime", hasLastTimes ? repaired : untouched));
            QVERIFY(sameSamples(*laps[1], "lapcurrentlaptime", untouched)); // the last lap is not repaired
        }
    }

    void sidecar()
    {
        files.write(u"run.ldx"_s, "<x><i Id='Event' Value='Race'/><i Id='Session' Value='Test'/>"
                                  "<i Id='CarSetup_Fuel' Value='20' Unit='l'/><i Value='no name'/></x>");
        const Laps laps = import("\nlapdistpct\n\n\n98\n2\n", u"run.2024.csv"_s);
        QCOMPARE(laps.size(), 2);
        for (const auto &lap : laps) {
            QCOMPARE(lap->header().session, Session::Race);
            QCOMPARE(lap->header().dynamicData.size(), 1);
            QVERIFY(lap->header().dynamicData.value(u"Fuel"_s) == Value(20.0, u"l"_s));
        }
        QCOMPARE(import("\na\n\n\n1\n")[0]->header().session, Session::UnknownSession);
    }

    void whatIsNoFile()
    {
        for (const QString &path : {files.path(u"none.csv"_s), files.path({}), u"/dev/zero"_s, QString()}) {
            ORVAReader reader(nullptr);
            QSignalSpy messages(&reader, &ORVAReader::message);
            QVERIFY(reader.importLaps(path).isEmpty());
            QCOMPARE(messages.size(), 1);
            QCOMPARE(messages[0], QVariantList({u"Done; Laps read 0"_s, 0}));
        }
        const Laps laps = import("");
        QCOMPARE(laps.size(), 1);
        QVERIFY(laps[0]->isEmpty());
    }

    void lapNumbers()
    {
        const QList<QByteArray> written{"2147483647", "-2147483648", "8.6", "-0.4", "3e9", "1e30", "-inf", "nan", "x"};
        QByteArray rows = "90,0\n";
        for (const QByteArray &number : written)
            rows += "2," + number + "\n99,0\n";
        const Laps laps = importRows("Lap Dist Pct,Lap Number", rows);
        QCOMPARE(laps.size(), written.size() + 1);
        for (qsizetype i = 0; i < written.size(); ++i) {
            const double number = written[i].toDouble();
            QCOMPARE(laps[i + 1]->header().lapNumber, std::abs(number) < 1e18 ? QVariant(number).toInt() : 0);
        }
    }

    void roomOfFinishedLaps()
    {
        QByteArray rows;
        for (const int count : {1000, 100, 3000, 2})
            rows += "99,1\n"_ba + "0,1\n"_ba.repeated(count);
        for (const auto &lap : importRows("lapdistpct,x", rows).sliced(1)) {
            const auto channel = lap->channel(u"x"_s);
            QVERIFY(channel->capacity() <= channel->size() + channel->size() / 16);
        }
    }

    void hostileShapes_data()
    {
        const Table<QByteArray> row("rows");
        const QByteArray wide(20000, ',');
        row("short rows behind a wide one", wide + "\n" + "1\n"_ba.repeated(100000));
        row("ever wider rows", "1\n"_ba.repeated(100000) + wide + "\n");
        row("a wide row behind many narrow ones", "90\n"_ba.repeated(100000) + "0" + wide + "\n");
        row("a lap a row", ("0" + wide + "\n99" + wide + "\n").repeated(50));
    }
    void hostileShapes()
    {
        QFETCH(QByteArray, rows);
        QByteArray names = "lapdistpct";
        for (int i = 0; i < 20000; ++i)
            names += "," + QByteArray::number(i);
        long long samples = 0;
        long long channelCount = 0;
        for (const auto &lap : importRows(names, rows)) {
            const qsizetype channels = lap->getAvailableRecordedChannels().size();
            samples += lap->size() * channels;
            channelCount += channels;
        }
        const auto fileSize = static_cast<long long>(names.size() + rows.size());
        QVERIFY(samples < 8LL * 1024 * 1024 + 5 * fileSize);
        QVERIFY(channelCount <= 512LL * 1024 + fileSize / 8 + 1);
    }

    void oneReaderTwice()
    {
        // The row in hand outlives an import, whichever way it went into its lap.
        const QString path = files.write(u"twice.csv"_s, "\nlapdistpct,lapnumber\n\n\n1,1\n2,2\n3,3\n");
        ORVAReader reader(nullptr);
        QCOMPARE(reader.importLaps(path)[0]->header().lapNumber, 0);
        const Laps laps = reader.importLaps(path);
        QCOMPARE(laps.size(), 1);
        QCOMPARE(laps[0]->header().lapNumber, 3);
    }
};

QTEST_GUILESS_MAIN(TestOrvaReader)
#include "tst_orvareader.moc"
