#include "testing.h"

#include "csv/orvareader.h"

#include <QtTest/QSignalSpy>

using namespace KOV::SDK;

using Testing::sameSamples;
using Laps = QList<QSharedPointer<Lap>>;

namespace {

constexpr double none = invalidValue;
const QTime placeholder(0, 59, 59);

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class TestOrvaReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocks_data();
    void blocks();
    void headerRows_data();
    void headerRows();
    void lapCuts_data();
    void lapCuts();
    void headersOfLaps();
    void rowsOfOddLength();
    void straightRoadEqualsAddSample();
    void repeatedNames();
    void units();
    void decimation_data();
    void decimation();
    void lapTimes_data();
    void lapTimes();
    void clockRepair_data();
    void clockRepair();
    void sidecar();
    void whatIsNoFile_data();
    void whatIsNoFile();
    void hostileShapes_data();
    void hostileShapes();

private:
    Laps import(const QByteArray &content, const QString &name = QStringLiteral("log.csv"))
    {
        const QString path = files.write(name, content);
        ORVAReader reader(nullptr);
        QSignalSpy messages(&reader, &ORVAReader::message);
        Laps laps = reader.importLaps(path);
        if (messages.size() != 1 || messages[0][0].toString() != QStringLiteral("Done; Laps read %1").arg(laps.size()))
            qFatal("not the one closing message");
        return laps;
    }

    // An export of one "lapdistpct" column and others, with the data rows given.
    Laps importRows(const QByteArray &names, const QByteArray &rows, const QByteArray &header = "Venue,V\n")
    {
        return import(header + "\n" + names + "\n,\n\n" + rows);
    }

    Testing::Files files;
};

void TestOrvaReader::blocks_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<std::vector<double>>("a");
    const auto add = [](const char *name, const char *content, const std::vector<double> &a) {
        QTest::newRow(name) << QByteArray(content) << a;
    };
    add("plain", "K,v\n\na,b\nm,s\n\n1,2\n3,4\n", {1, 3});
    add("no header", "\na\nm\n\n1\n", {1});
    add("blank lines before the names", "K,v\n\n\n\n\na\nm\n\n1\n", {1});
    add("no separator", "K,v\n\na\nm\n1\n2\n", {2});
    add("empty unit row", "K,v\n\na\n\n\n1\n", {1});
    add("two empty lines behind the units", "K,v\n\n\na\nm\n\n\n1\n", {1});
    add("CR LF", "K,v\r\n\r\na\r\nm\r\n\r\n1\r\n2", {1, 2});
    add("quoted", "\"K\",\"v\"\n\n\"a\"\n\"m\"\n\n\"1,5\"\n\"-2\"\n\"\"\n\"2.5\"\n", {1.5, -2, 0});
    add("a line of blanks is a row", "K,v\n\na\nm\n\n1\n \n", {1, 0});
    add("names lose case, blanks and minus signs", "K,v\n\n A - \nm\n\n1\n", {1});
    add("a blank line is none in the header", "K,v\n \n\na\nm\n\n1\n", {1});
}

void TestOrvaReader::blocks()
{
    QFETCH(QByteArray, content);
    QFETCH(std::vector<double>, a);
    const Laps laps = import(content);
    QCOMPARE(laps.size(), 1);
    QVERIFY(sameSamples(*laps[0], "a", a));
    QVERIFY(sameSamples(*laps[0], "lapdistpct", std::vector<double>(a.size(), 0.0)));
    QCOMPARE(laps[0]->header().lapTime, placeholder);
}

void TestOrvaReader::headerRows_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QString>("venue");
    QTest::addColumn<QString>("vehicle");
    QTest::addColumn<QString>("driver");
    const auto add = [](const char *name, const char *header, const char *venue, const char *vehicle,
                        const char *driver) {
        QTest::newRow(name) << QByteArray(header) << text(venue) << text(vehicle) << text(driver);
    };
    add("all", "Venue,Ring\nVehicle,Car\nDriver,Ann\n", "Ring", "Car", "Ann");
    add("quoted, with a second pair", "\"Venue\",\"Ring\",,,\"Vehicle\",\"no\"\n\"Driver\",\" Ann \"\n", "Ring", "",
        " Ann ");
    add("cut at a comma", "\"Venue\",\"Ring, North\"\n", "Ring", "", "");
    add("the later counts, also empty", "Venue,A\nVenue,B\nDriver,A\nDriver,\n", "B", "", "");
    add("exact keys", "venue,A\n Venue,B\nVenue\nVenues,C\n", "", "", "");
    add("UTF-8", "Venue,Sp\xC3\xA4\n", "Sp\xC3\xA4", "", "");
}

void TestOrvaReader::headerRows()
{
    QFETCH(QByteArray, header);
    const Laps laps = importRows("a", "1\n", header);
    QTEST(laps[0]->header().venueName, "venue");
    QTEST(laps[0]->header().carInfo.carName, "vehicle");
    QTEST(laps[0]->header().carInfo.driverName, "driver");
}

void TestOrvaReader::lapCuts_data()
{
    QTest::addColumn<QByteArray>("rows");
    QTest::addColumn<QList<int>>("sizes");
    const auto add = [](const char *name, const char *rows, const QList<int> &sizes) {
        QTest::newRow(name) << QByteArray(rows) << sizes;
    };
    add("98 to 2", "97\n98\n2\n3\n", {2, 2});
    add("100 to 25 is exactly three quarters", "100\n25\n", {2});
    add("just over", "100\n24.99\n", {1, 1});
    add("50 to 0", "50\n0\n", {2});
    add("starts at 90", "90\n95\n1\n", {2, 1});
    add("NaN hides a fall", "98\nnan\n2\n", {3});
    add("two cuts running", "99\n1\n99\n1\n2\n", {1, 2, 2});
    add("fractions never cut", "0.98\n0.02\n", {2});
    add("no number is zero", "98\nx\n", {1, 1});
}

void TestOrvaReader::lapCuts()
{
    QFETCH(QByteArray, rows);
    QFETCH(QList<int>, sizes);
    const Laps laps = importRows("LapDistPct", rows);
    QList<int> actual;
    for (const auto &lap : laps)
        actual.append(static_cast<int>(lap->size()));
    QCOMPARE(actual, sizes);
}

void TestOrvaReader::headersOfLaps()
{
    const Laps laps = importRows("Lap Dist Pct,Lap Number", "90,7\n98,7\n2,8\n99,8.6\n1,12\n");
    QCOMPARE(laps.size(), 3);
    const QList<int> numbers{0, 8, 12};
    for (int i = 0; i < 3; ++i) {
        const LapHeader &header = laps[i]->header();
        QCOMPARE(header.lapNumber, numbers[i]);
        QCOMPARE(header.stintLapIndex, i);
        QCOMPARE(header.stintNumber, 1);
        QCOMPARE(header.lapKind, i == 0 ? 0 : 1);
        QCOMPARE(header.completed, i < 2);
        QVERIFY(i == 2 ? header.lapTime == placeholder : !header.lapTime.isValid());
        QCOMPARE(header.venueName, QStringLiteral("V"));
        QVERIFY(!header.lapId.isNull() && !header.dateTime.isValid());
        QCOMPARE(header.stintId, laps[0]->header().stintId);
        QCOMPARE(header.sessionId, laps[0]->header().sessionId);
        QVERIFY(i == 0 || header.lapId != laps[i - 1]->header().lapId);
    }
    QVERIFY(!laps[0]->header().stintId.isNull() && !laps[0]->header().sessionId.isNull());
    QVERIFY(sameSamples(*laps[1], "lapdistpct", {2 * 0.01, 99 * 0.01}));
    QVERIFY(sameSamples(*laps[1], "lapnumber", {8, 8.6}));
    QCOMPARE(laps[1]->channel(QStringLiteral("lapdistpct"))->unit(), QStringLiteral("pu"));
}

void TestOrvaReader::rowsOfOddLength()
{
    // Short rows, rows of too many fields and laps that begin with either, among rows of the full width.
    const Laps laps = importRows("lapdistpct,b,c", "1\n2,20,30\n3,21\n98,22,32,99\n2,40,50\n3,41,51\n4\n5,42,52,7,7\n");
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

void TestOrvaReader::straightRoadEqualsAddSample()
{
    // Many rows over several laps, one file with and one without an irregular row in front of every regular one's lap.
    QByteArray rows;
    std::vector<std::vector<double>> expected(3);
    std::vector<double> distances;
    for (int i = 0; i < 700; ++i) {
        const int distance = i % 234 == 233 ? 100 : i % 100;
        if (i > 0 && distances.back() - distance * 0.01 > 0.75)
            continue; // the same lap throughout: cuts have their own test
        distances.push_back(distance * 0.01);
        rows += QByteArray::number(distance);
        for (int column = 0; column < 3; ++column) {
            const double value = i * 10 + column;
            expected[static_cast<std::size_t>(column)].push_back(value);
            rows += "," + QByteArray::number(value);
        }
        rows += "\n";
    }
    const Laps laps = importRows("lapdistpct,x,y,z", rows);
    QCOMPARE(laps.size(), 1);
    QVERIFY(sameSamples(*laps[0], "lapdistpct", distances));
    QVERIFY(sameSamples(*laps[0], "x", expected[0]));
    QVERIFY(sameSamples(*laps[0], "y", expected[1]));
    QVERIFY(sameSamples(*laps[0], "z", expected[2]));
}

void TestOrvaReader::repeatedNames()
{
    const Laps laps = importRows("Time,a,T-ime,", "1,2,3,4\n5,6,7,8\n9\n10,11,12,13\n");
    QVERIFY(sameSamples(*laps[0], "time", {3, 7, 9, 12})); // a short row has the earlier column only
    QVERIFY(sameSamples(*laps[0], "", {4, 8, none, 13}));
    QCOMPARE(laps[0]->getAvailableRecordedChannels().size(), 4);
    const Laps distances = importRows("lapdistpct,LapDistPct", "0,98\n98,2\n");
    QCOMPARE(distances.size(), 2); // the last column of the name counts
}

void TestOrvaReader::units()
{
    const Laps laps = import("\nlapdistpct,a,b,a,c\n%,m,..,s\n\n1,2,3,4,5\n");
    const auto unit = [&](const char *name) { return laps[0]->channel(text(name))->unit(); };
    QCOMPARE(unit("lapdistpct"), QStringLiteral("pu"));
    QCOMPARE(unit("a"), QStringLiteral("s"));
    QCOMPARE(unit("b"), QStringLiteral(".."));
    QVERIFY(unit("c").isNull());
    const Laps emptyRow = import("\na,b\n\n\n1,2\n");
    QVERIFY(!emptyRow[0]->channel(QStringLiteral("a"))->unit().isNull());
    QVERIFY(emptyRow[0]->channel(QStringLiteral("b"))->unit().isNull());
}

void TestOrvaReader::decimation_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<bool>("decimated");
    QTest::newRow("360") << QByteArray("Sample Rate,360\n") << true;
    QTest::newRow("360.000 quoted") << QByteArray("\"Sample Rate\",\"360,000\",\"Hz\"\n") << true;
    QTest::newRow("13600") << QByteArray("Sample Rate,13600\n") << true;
    QTest::newRow("60") << QByteArray("Sample Rate,60,360\n") << false;
    QTest::newRow("the later counts") << QByteArray("Sample Rate,360\nSample Rate,60\n") << false;
    QTest::newRow("none") << QByteArray("Rate,360\n") << false;
}

void TestOrvaReader::decimation()
{
    QFETCH(QByteArray, header);
    QFETCH(bool, decimated);
    QByteArray rows;
    for (int i = 0; i < 20; ++i)
        rows += QByteArray::number(i) + (i % 4 == 3 ? "\n\n\"\"\n" : "\n"); // empty rows do not count
    const Laps laps = importRows("a", rows, header);
    QCOMPARE(laps[0]->size(), decimated ? 4 : 20);
    if (decimated)
        QVERIFY(sameSamples(*laps[0], "a", {0, 6, 12, 18}));
}

void TestOrvaReader::lapTimes_data()
{
    QTest::addColumn<QByteArray>("nextLap"); // its "laplastlaptime"
    QTest::addColumn<QTime>("lapTime");
    const auto add = [](const char *name, const char *nextLap, const QTime &lapTime) {
        QTest::newRow(name) << QByteArray(nextLap) << lapTime;
    };
    add("fraction is cut", "0 92.3456", QTime(0, 1, 32, 345));
    add("the last positive counts", "80 92.5 0 -1", QTime(0, 1, 32, 500));
    add("invalid ones are passed over", "92.5 1e25 nan inf", QTime(0, 1, 32, 500));
    add("none", "0 -3 nan", placeholder);
    add("below a millisecond", "0.0009", placeholder);
    add("a day and a second wraps", "86401", QTime(0, 0, 1));
    add("a day is no time", "86400", placeholder);
    add("beyond an int", "1e20", QTime(0, 0).addMSecs(std::numeric_limits<int>::max()));
}

void TestOrvaReader::lapTimes()
{
    QFETCH(QByteArray, nextLap);
    QFETCH(QTime, lapTime);
    QByteArray rows = "98,50\n";
    for (const QByteArray &time : nextLap.split(' '))
        rows += "1," + time + "\n";
    const Laps laps = importRows("lapdistpct,laplastlaptime", rows);
    QCOMPARE(laps.size(), 2);
    QCOMPARE(laps[0]->header().lapTime, lapTime);
    QCOMPARE(laps[1]->header().lapTime, placeholder);
}

void TestOrvaReader::clockRepair_data()
{
    QTest::addColumn<QByteArray>("names");
    QTest::addColumn<std::vector<double>>("clock");
    const double distance = 0.3 * 0.01;
    const std::vector<double> repaired{0.1 * (0.1 * 0.01) / distance, 0.1 * (0.2 * 0.01) / distance, 0.1, 0.2, 0.3};
    const std::vector<double> untouched{95.2, 95.3, 0.1, 0.2, 0.3};
    QTest::newRow("repaired") << QByteArray("lapdistpct,lapcurrentlaptime,laplastlaptime") << repaired;
    QTest::newRow("no last lap time") << QByteArray("lapdistpct,lapcurrentlaptime,other") << untouched;
}

void TestOrvaReader::clockRepair()
{
    QFETCH(QByteArray, names);
    QFETCH(std::vector<double>, clock);
    const QByteArray lap = "0.1,95.2,0\n0.2,95.3,0\n0.3,0.1,0\n0.4,0.2,0\n99,0.3,0\n";
    const Laps laps = importRows(names, lap + lap);
    QCOMPARE(laps.size(), 2);
    QVERIFY(sameSamples(*laps[0], "lapcurrentlaptime", clock));
    QVERIFY(sameSamples(*laps[1], "lapcurrentlaptime", {95.2, 95.3, 0.1, 0.2, 0.3})); // the last lap is not repaired
}

void TestOrvaReader::sidecar()
{
    files.write(QStringLiteral("run.ldx"),
                "<x><i Id='Event' Value='Race'/><i Id='CarSetup_Fuel' Value='20' Unit='l'/></x>");
    const Laps laps = import("\nlapdistpct\n\n\n98\n2\n", QStringLiteral("run.2024.csv"));
    QCOMPARE(laps.size(), 2);
    for (const auto &lap : laps) {
        QCOMPARE(lap->header().session, Session::Race);
        QCOMPARE(lap->header().dynamicData.size(), 1);
        QVERIFY(lap->header().dynamicData.value(QStringLiteral("Fuel")) == Value(20.0, QStringLiteral("l")));
    }
    QCOMPARE(import("\na\n\n\n1\n")[0]->header().session, Session::UnknownSession);
}

void TestOrvaReader::whatIsNoFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << files.path(QStringLiteral("none.csv"));
    QTest::newRow("directory") << files.path(QString());
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("empty path") << QString();
}

void TestOrvaReader::whatIsNoFile()
{
    QFETCH(QString, path);
    ORVAReader reader(nullptr);
    QSignalSpy messages(&reader, &ORVAReader::message);
    QVERIFY(reader.importLaps(path).isEmpty());
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages[0], QList<QVariant>({QStringLiteral("Done; Laps read 0"), 0}));
    const Laps laps = import("");
    QCOMPARE(laps.size(), 1);
    QVERIFY(laps[0]->isEmpty() && !laps[0]->header().completed);
}

void TestOrvaReader::hostileShapes_data()
{
    QTest::addColumn<QByteArray>("rows");
    const QByteArray wide = QByteArray(20000, ',');
    QTest::newRow("short rows behind a wide one") << wide + "\n" + QByteArray("1\n").repeated(100000);
    QTest::newRow("ever wider rows") << QByteArray("1\n").repeated(100000) + wide + "\n";
    QTest::newRow("a lap a row") << ("0" + wide + "\n99" + wide + "\n").repeated(50);
}

void TestOrvaReader::hostileShapes()
{
    QFETCH(QByteArray, rows);
    QByteArray names = "lapdistpct";
    for (int i = 0; i < 20000; ++i)
        names += "," + QByteArray::number(i);
    const Laps laps = importRows(names, rows);
    long long samples = 0;
    long long channelCount = 0;
    for (const auto &lap : laps) {
        const QList<QString> channels = lap->getAvailableRecordedChannels();
        for (const QString &name : channels)
            QCOMPARE(lap->channel(name)->size(), lap->size());
        samples += lap->size() * channels.size();
        channelCount += channels.size();
    }
    const auto fileSize = static_cast<long long>(names.size() + rows.size());
    QVERIFY(samples < 1024 * 1024 + 5 * fileSize);
    QVERIFY(channelCount <= 512 * 1024 + fileSize / 8 + 1);
}

QTEST_GUILESS_MAIN(TestOrvaReader)
#include "tst_orvareader.moc"
