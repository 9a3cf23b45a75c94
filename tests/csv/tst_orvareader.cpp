// From a text export to its laps, and how a row loses its quotes (csv/csvtext.h).

#include "testing.h"

#include "csv/csvtext.h"
#include "csv/orvareader.h"

#include <QtTest/QSignalSpy>

#include <cmath>
#include <limits>

using namespace KOV::SDK;
using namespace Testing;

namespace {

const QTime placeholder(0, 59, 59);

// Each lap as "name[unit] sample sample; name ...", and "-" for no value. Numbers are exact to the last bit.
QString textOf(const Laps &laps)
{
    QStringList texts;
    for (const auto &lap : laps) {
        QStringList channels;
        for (const QString &name : lap->getAvailableRecordedChannels()) {
            const auto channel = lap->channel(name);
            channels += channel->unit().isNull() ? name : name + u'[' + channel->unit() + u']';
            for (const double sample : channel->samples())
                channels.last() += sameBits(sample, invalidValue)
                                       ? u" -"_s
                                       : u' ' + QString::number(sample, 'g', QLocale::FloatingPointShortest);
        }
        texts += channels.join(u"; ");
    }
    return texts.join(u" | ");
}

} // namespace

class TestOrvaReader : public QObject
{
    Q_OBJECT

    Laps importFile(const QString &path)
    {
        ORVAReader reader(nullptr);
        QSignalSpy messages(&reader, &ORVAReader::message);
        Laps laps = reader.importLaps(path);
        if (messages.size() != 1 || messages[0] != QVariantList{u"Done; Laps read %1"_s.arg(laps.size()), 0})
            qFatal("expected one closing message");
        if (!areSound(laps))
            qFatal("headers or channels do not fit together");
        return laps;
    }
    Laps import(const QByteArray &content) { return importFile(files.write(u"log.csv"_s, content)); }

    Files files;

private Q_SLOTS:
    void laps_data()
    {
        const Table<QByteArray, QString> row("content", "laps");
        row("plain", "K,v\n\na,b\nm,s\n\n1,2\n3,4\n", u"a[m] 1 3; b[s] 2 4; lapdistpct[pu] 0 0"_s);
        row("blank lines", " \nK,v\n\n\n\na\n\n\n\n1\n \n", u"a[] 1 0; lapdistpct[pu] 0 0"_s);
        row("no separator", "\r\na\r\nm\r\n1\r\n2", u"a[m] 2; lapdistpct[pu] 0"_s);
        row("quoted", "\"K\",\"v\"\n\n\"a\"\n\"m\"\n\n\"1,5\"\n\"-2\"\n\"\"\n\"2.5\"\n",
            u"a[m] 1.5 -2 0; lapdistpct[pu] 0 0 0"_s);
        row("the last column of a name", "\nTime,T-ime,,LapDistPct,lap dist-pct\ns,m,..\n\n2,3,4,0,98\n6,7,8,98,2\n9\n",
            u"[..] 4; lapdistpct[pu] 0.98; time[m] 3 | [..] 8 -; lapdistpct[pu] 0.02 0; time[m] 7 9"_s);
        row("other blanks and other lower cases", "\n\tA\xC2\xA0 B-,\xC2\xB5S\n\n\n1,2\n",
            u"\ta\u00A0b[] 1; lapdistpct[pu] 0; \u00B5s 2"_s);
        row("short and long rows", "\nlapdistpct,b,c\n\n\n1\n2,20,30\n3,21\n98,22,32,99\n2,40,50\n4\n5,42,52,7,7\n",
            u"b - 20 21 22; c - 30 - 32; lapdistpct[pu] 0.01 0.02 0.03 0.98 | "
            "b 40 - 42; c 50 - 52; lapdistpct[pu] 0.02 0.04 0.05"_s);
        row("a row without its distance", "\na,lapdistpct\n\n\n1,98\n2\n3,2\n",
            u"a[] 1; lapdistpct[pu] 0.98 | a[] 2 3; lapdistpct[pu] 0 0.02"_s);
        row("falls of the distance", "\nlapdistpct\n\n\n35\n100\n25\n57\n98\nnan\n2\n100\n24.99\n99\nx\n2\n",
            u"lapdistpct[pu] 0.35000000000000003 1 0.25 0.5700000000000001 0.98 nan 0.02 1 | "
            "lapdistpct[pu] 0.24989999999999998 0.99 | lapdistpct[pu] 0 0.02"_s);

        const QByteArray rows = "\n\na\n\n\n0\n1\n2\n\"\"\n\n3\n4\n5\n6\n7\n"; // the empty ones do not count
        const QString sixthRows = u"a[] 0 6; lapdistpct[pu] 0 0"_s;
        const QString allRows = u"a[] 0 1 2 3 4 5 6 7; lapdistpct[pu] 0 0 0 0 0 0 0 0"_s;
        row("rate of 360", "\"Sample Rate\",\"360,000\",\"Hz\"" + rows, sixthRows);
        row("rate of 13600", "Sample Rate,13600" + rows, sixthRows);
        row("two rates", "Sample Rate,360\nSample Rate,60,360" + rows, allRows);

        // The first lap's clock is repaired up to where it restarts, but only if there are logged lap times.
        const QByteArray lap = "24,95,0\n48,96,0\n72,3,0\n100,4,0\n";
        const QString distances = u"lapdistpct[pu] 0.24 0.48 0.72 1; "_s;
        const QString secondLap = u" | lapcurrentlaptime 95 96 3 4; "_s + distances;
        row("clock", "\nlapdistpct,lapcurrentlaptime,laplastlaptime\n\n\n" + lap + lap,
            u"lapcurrentlaptime 1 2 3 4; %1laplastlaptime 0 0 0 0%2laplastlaptime 0 0 0 0"_s.arg(distances, secondLap));
        row("clock alone", "\nlapdistpct,lapcurrentlaptime,x\n\n\n" + lap + lap,
            u"lapcurrentlaptime 95 96 3 4; %1x 0 0 0 0%2x 0 0 0 0"_s.arg(distances, secondLap));
    }
    void laps()
    {
        QFETCH(QByteArray, content);
        QTEST(textOf(import(content)), "laps");
    }

    void headerRows_data()
    {
        const Table<QByteArray, QStringList> row("header", "texts"); // venue, vehicle, driver
        row("quoted, with a second pair",
            "\"Venue\",\"Ring \",,,\"Vehicle\",\"no\"\nVehicle,\tCar\n\"Driver\",\" Ann \"\n",
            {u"Ring "_s, u"\tCar"_s, u" Ann "_s});
        row("the later counts, also empty", "Venue,A\nVenue,\"Sp\xC3\xA4, North\"\nDriver,A\nDriver,\n",
            {u"Sp\u00E4"_s, {}, {}});
        row("exact keys", "venue,A\n Venue,B\nVenue\nVenues,C\n", {{}, {}, {}});
    }
    void headerRows()
    {
        QFETCH(QByteArray, header);
        const LapHeader first = import(header + "\na\n\n\n1\n")[0]->header();
        QTEST(QStringList({first.venueName, first.carInfo.carName, first.carInfo.driverName}), "texts");
        QVERIFY(first.session == Session::UnknownSession && !first.dateTime.isValid());
    }

    void headersOfLaps()
    {
        files.write(u"run.ldx"_s, "<x><i Id='Event' Value='Race'/><i Id='Session' Value='Test'/>"
                                  "<i Id='CarSetup_Fuel' Value='20' Unit='l'/><i Value='no name'/></x>");
        const QList<QByteArray> written{"7",   "2147483647", "-2147483648", "8.6", "-0.4",
                                        "3e9", "1e30",       "-inf",        "nan", "x"};
        QByteArray text = "Venue,V\n\nLap Dist Pct,Lap Number\n\n\n";
        for (const QByteArray &number : written)
            text += "2," + number + "\n99,0\n";
        const QString path = files.write(u"run.2024.csv"_s, text);
        const Laps laps = importFile(path);
        QCOMPARE(laps.size(), written.size());
        QSet<QUuid> identities;
        for (const Laps &import : {laps, importFile(path)}) {
            identities += {import[0]->header().stintId, import[0]->header().sessionId};
            for (const auto &lap : import)
                identities += lap->header().lapId;
        }
        QCOMPARE(identities.size(), 2 * (2 + laps.size()));
        for (qsizetype i = 0; i < laps.size(); ++i) {
            const LapHeader &header = laps[i]->header();
            const double number = i == 0 ? 0.0 : written[i].toDouble();
            QCOMPARE(header.lapNumber, std::abs(number) < 1e18 ? QVariant(number).toInt() : 0);
            QCOMPARE(header.lapTime, i + 1 < laps.size() ? QTime() : placeholder);
            QCOMPARE(header.venueName, u"V"_s);
            QCOMPARE(header.session, Session::Race);
            QCOMPARE(header.dynamicData.size(), 1);
            QVERIFY(header.dynamicData.value(u"Fuel"_s) == Value(20.0, u"l"_s));
        }
    }

    void lapTimes_data()
    {
        const Table<QByteArray, QTime> row("nextLap", "lapTime"); // the next lap's "laplastlaptime"
        row("the last positive, its fraction cut", "80 92.3456 1e25 nan inf 0 -1", QTime(0, 1, 32, 345));
        row("none", "0 -3 nan", placeholder);
        row("below a millisecond", "0.0009", placeholder);
        row("a day is not a time", "86400", placeholder);
        row("a day and a second wraps", "86401", QTime(0, 0, 1));
        row("beyond an int", "1e20", QTime(0, 0).addMSecs(std::numeric_limits<int>::max()));
    }
    void lapTimes()
    {
        QFETCH(QByteArray, nextLap);
        const Laps laps = import("\nlapdistpct,laplastlaptime\n\n\n98,50\n1," + nextLap.replace(" ", "\n1,") + "\n");
        QCOMPARE(laps.size(), 2);
        QTEST(laps[0]->header().lapTime, "lapTime");
        QCOMPARE(laps[1]->header().lapTime, placeholder);
    }

    void noRows()
    {
        QVERIFY(importFile(files.path(u"none.csv"_s)).isEmpty());
        QVERIFY(importFile(files.path({})).isEmpty());
        QVERIFY(importFile({}).isEmpty());
        QCOMPARE(import("").size(), 1);
    }

    void roomOfFinishedLaps()
    {
        QByteArray rows;
        for (const int count : {1000, 100, 3000, 2})
            rows += "99,1\n"_ba + "0,1\n"_ba.repeated(count);
        for (const auto &lap : import("\nlapdistpct,x\n\n\n" + rows).sliced(1)) {
            const auto channel = lap->channel(u"x"_s);
            QVERIFY(channel->capacity() <= channel->size() + channel->size() / 16);
        }
    }

    static QByteArray titles(int columns)
    {
        QByteArray names = "\nlapdistpct";
        for (int i = 1; i < columns; ++i)
            names += "," + QByteArray::number(i);
        return names + "\n\n\n";
    }

    void smallFilesAreReadWhole()
    {
        const auto rowsAfterAWideOne = [](int columns, int fields, int count) {
            return titles(columns) + QByteArray(columns - 1, ',') + "\n" +
                   (QByteArray(fields - 1, ',') + "\n").repeated(count);
        };
        QCOMPARE(import(rowsAfterAWideOne(1000, 5, 60000)).constFirst()->size(), 60001);
        QCOMPARE(import(rowsAfterAWideOne(300, 6, 100000)).constFirst()->size(), 100001);
        QByteArray sidecar;
        for (int i = 0; i < 200; ++i)
            sidecar += "<i Id='" + QByteArray::number(i) + "' Value='1' Unit=''/>";
        files.write(u"many.ldx"_s, "<x>" + sidecar + "</x>");
        const QByteArray lap = "0,1\n90,2\n";
        QCOMPARE(importFile(files.write(u"many.csv"_s, titles(2) + lap.repeated(20000))).size(), 20000);
    }

    void hostileShapes()
    {
        const QByteArray names = titles(20001);
        const QByteArray wide(20000, ',');
        const QByteArray narrowRows = "90\n"_ba.repeated(100000);
        for (const QByteArray &rows : {wide + "\n" + narrowRows, narrowRows + "90" + wide, narrowRows + "0" + wide,
                                       ("0" + wide + "\n99" + wide + "\n").repeated(50)}) {
            const QByteArray text = names + rows;
            qint64 samples = 0;
            qint64 channels = 0;
            for (const auto &lap : import(text)) {
                channels += lap->getAvailableRecordedChannels().size();
                samples += lap->size() * lap->getAvailableRecordedChannels().size();
            }
            QVERIFY(8 * samples + 256 * channels <= 512LL * 1024 * 1024 + 48 * text.size());
        }
    }

    void quotes()
    {
        const QList<std::pair<QString, QString>> rows{
            {uR"("12","-7","-0,25","5,",3)"_s, u"12,-7,-0.25,5.,3"_s},
            {uR"("1.5",",5","+5,1","1,234,567")"_s, uR"("1.5",",5","+5,1","1,234,567")"_s},
            {uR"(1,"",2,"""",x"5"y,"1""2","""5""",1,"2,"3)"_s, u"1,,2,,x5y,12,5,1,2.3"_s}};
        for (auto [row, expected] : rows) {
            processCsvString(row);
            QCOMPARE(row, expected);
        }
    }
};

QTEST_GUILESS_MAIN(TestOrvaReader)
#include "tst_orvareader.moc"
