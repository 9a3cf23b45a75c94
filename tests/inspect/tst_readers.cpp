// The readers of what is in logs: text exports, .ld logs, sidecars.

#include "inspect/binarylog.h"
#include "inspect/drivingchannels.h"
#include "inspect/sidecar.h"
#include "inspect/textlog.h"
#include "ld/ldx.h"

#include "testing.h"
#include "tests/ld/ldwriter.h"

#include <QtCore/QStringEncoder>

using namespace Inspect;
using namespace Qt::StringLiterals;
using Testing::Table;

namespace {

// What a reader makes of an export, as one text: header, columns, and rows with their lines, in which quoted cells have
// their quotes.
QString outline(const QString &path)
{
    TextLog log(path);
    QString text;
    for (const HeaderEntry &entry : log.preamble().header)
        text += u"%1=%2 %3;"_s.arg(entry.key, entry.value, entry.unit);
    text += u"|"_s;
    for (const TextColumn &column : log.columns())
        text += u"%1 [%2];"_s.arg(column.title, column.unit);
    while (log.nextRow()) {
        text += u"|%1%2:"_s.arg(log.lineNumber()).arg(log.isInPreamble() ? u"!"_s : QString());
        for (const Cell &cell : log.cells())
            text += cell.isQuoted ? u"<%1>"_s.arg(textOf(cell)) : u" %1 "_s.arg(textOf(cell));
    }
    return text;
}

} // namespace

class tst_Readers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exports_data()
    {
        const Table<QByteArray, QString> row("content", "expected");
        row("plain", "Venue,Mill Lane\n\nTime,Speed\ns,km/h\n\n0,1\n1,2\n",
            u"Venue=Mill Lane ;|Time [s];Speed [km/h];|6: 0  1 |7: 1  2 "_s);
        row("as tools write it",
            "\"Rate\",\"20,000\",\"Hz\",,\"End Time\",\"9,5\",\"s\"\r\n\r\n\r\n\"Time\",\"A,B\"\r\n\"s\",\"\"\r\n"
            "\r\n\r\n\"0,5\",\"-1\"\r\n",
            u"Rate=20,000 Hz;End Time=9,5 s;|Time [s];A,B [];|8:<0,5><-1>"_s);
        row("quotes in quotes", "\n\nT,N\n,\n\n\"1\",\"a \"\"b\"\", c\"\n\"\"\n1,\"open\n1,x\"y\"\n",
            u"|T [];N [];|6:<1><a \"b\", c>|8: 1 <open>|9: 1  x\"y\" "_s);
        row("rows in place of units and separator", "K,V\n\nT,N\n1,2\n3,4\n",
            u"K=V ;|T [];N [];|4!: 1  2 |5!: 3  4 "_s);
        row("no empty line", "K,V,\nT,N,M\ns,m,\n1,2,3\n", u"K=V ;|T [s];N [m];M [];|4!: 1  2  3 "_s);
        row("beacons without quotes", "Beacon Markers,77.784, 155.730,,Range,Lap 7\n\nT\n",
            u"Beacon Markers=77.784,  155.730 ;Range=Lap 7 ;|T [];"_s);
        row("beacons up to where the second key would be", "Beacon Markers,1,2,3,4,5\n\nT\n",
            u"Beacon Markers=1, 2, 3, 4, 5 ;|T [];"_s);
        row("lines of quotes", "K,V\n\nT,N\n,\n\n\"\"\"\"\n\"\"\"\n1,2\n", u"K=V ;|T [];N [];|7:<\">|8: 1  2 "_s);
        row("titles without units", "K,V,W\nT,N\n1,2\n", u"K=V W;|T [];N [];|3!: 1  2 "_s);
        row("rows alone", "1,2\n3,4\n", u"|1 [];2 [];|2!: 3  4 "_s);
        row("Latin-1", "Unit,\xB0\n\nT\n", u"Unit=° ;|T [];"_s);
        row("mark of UTF-8", "\xEF\xBB\xBFK,°\n\nT\n", u"K=° ;|T [];"_s);
        row("no ending", "K,V\n\nT\ns\n\n1", u"K=V ;|T [s];|6: 1 "_s);
        row("header alone", "K,V\nL,W", u"K=V ;L=W ;|"_s);
        row("nothing", "", u"|"_s);
    }
    void exports()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        QCOMPARE(outline(files.write(u"log.csv"_s, content)), expected);
        // The same file in UTF-16, where it is text at all.
        if (!content.isValidUtf8() || content.startsWith("\xEF\xBB\xBF"))
            return;
        QStringEncoder encoder(QStringEncoder::Utf16LE, QStringEncoder::Flag::WriteBom);
        const QByteArray wide = encoder.encode(QString::fromUtf8(content));
        QCOMPARE(outline(files.write(u"wide.csv"_s, wide)), expected);
    }

    // Lines that lie across the blocks of the file, and the places of rows.
    void longExport()
    {
        QByteArray content("K,V\n\nTime,N\ns,\n\n");
        for (int i = 0; i < 100000; ++i)
            content += "\"" + QByteArray::number(i) + "\"," + QByteArray::number(7 * i) + (i % 3 == 0 ? "\r\n" : "\n");
        TextLog log(files.write(u"long.csv"_s, content));
        int rows = 0;
        for (; log.nextRow(); ++rows) {
            QCOMPARE(log.cells().size(), 2U);
            QCOMPARE(numberIn(log.cells()[0]).value_or(-1), rows);
            QCOMPARE(numberIn(log.cells()[1]).value_or(-1), 7 * rows);
            const QByteArray atOffset =
                content.mid(static_cast<qsizetype>(log.rowOffset()), static_cast<qsizetype>(log.row().size()));
            QCOMPARE(atOffset.toStdString(), std::string(log.row()));
        }
        QCOMPARE(rows, 100000);
    }

    void numbers_data()
    {
        const Table<QByteArray, double> row("text", "expected"); // -1 where there is none
        row("point", "27.4", 27.4);
        row("comma", "27,4", 27.4);
        row("sign and blanks", " +5 ", 5.0);
        row("exponent", "1e3", 1000.0);
        row("too large", "1e999", qInf());
        row("too small", "1e-999", 0.0);
        row("both signs", "1,234.5", -1.0);
        row("too large below zero", "-1e999", -qInf());
        row("too small in capitals", "1E-999", 0.0);
        row("too long", "0." + QByteArray(63, '1'), -1.0);
        row("plus and minus", "+-5", -1.0);
        row("other blanks", "\v5\r", 5.0);
        row("two commas", "1,2,3", -1.0);
        row("text", "12:30", -1.0);
        row("empty", " ", -1.0);
    }
    void numbers()
    {
        QFETCH(QByteArray, text);
        QTEST(numberIn(text.toStdString()).value_or(-1.0), "expected");
    }

    void numberLists_data()
    {
        const Table<QString, std::vector<double>> row("text", "expected");
        row("blanks", u"24.324 190.167 "_s, {24.324, 190.167});
        row("commas", u"77.784, 155.730"_s, {77.784, 155.730});
        row("decimal commas", u"77,784, 155,730"_s, {77.784, 155.730});
        row("zero", u"00.000     "_s, {0.0});
        row("semicolons, and a word", u"1;2.5 x 3"_s, {1.0, 2.5});
        row("blank", u"     "_s, {});
    }
    void numberLists()
    {
        QFETCH(QString, text);
        QTEST(numberList(text), "expected");
    }

    void records()
    {
        using LdWriter::channel;
        std::vector<LdWriter::Channel> channels{
            channel("Speed", {10, 20, 30}), channel("SPEED", {1}), channel("Float", {}),
            channel("Double", {}),          channel("Half", {}),   channel("Bytes", {1}),
            channel("No rate", {1}, {}, 0)};
        const auto setKind = [&channels](std::size_t index, quint16 width, quint32 count, const QByteArray &samples) {
            channels[index].header.typeCode = 7;
            channels[index].header.sampleWidth = width;
            channels[index].header.sampleCount = count;
            channels[index].samples = samples;
        };
        setKind(2, 4, 2, LdWriter::raw<float>({1.5F, -2.0F}));
        setKind(3, 8, 1, LdWriter::raw<double>({0.25}));
        setKind(4, 2, 1, LdWriter::raw<quint16>({0xC000}));
        channels[5].header.sampleWidth = 1;
        channels[6].header.sampleCount = 1000; // of which one and a half are in the file
        channels[6].samples = QByteArray("\x05\x00\x01", 3);
        BinaryLog log(files.write(u"log.ld"_s, LdWriter::log(channels)));

        struct Expected
        {
            PassedOver passedOver;
            std::vector<float> samples;
        };
        const std::vector<Expected> expected{
            {PassedOver::No, {10.0F, 20.0F, 30.0F}},
            {PassedOver::SameName, {1.0F}},
            {PassedOver::TypeCode, {1.5F, -2.0F}},
            {PassedOver::TypeCode, {0.25F}},
            {PassedOver::TypeCode, {-2.0F}},
            {PassedOver::SampleWidth, {}},
            {PassedOver::NoRate, {5.0F}},
        };
        QCOMPARE(log.records().size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            QCOMPARE(log.records()[i].passedOver, expected[i].passedOver);
            QCOMPARE(log.samples(log.records()[i]), expected[i].samples);
        }
    }

    void recordsThatShareTheirBytes()
    {
        std::vector<LdWriter::Channel> channels(100, LdWriter::channel("A", {}));
        channels.back().samples = QByteArray(100000, '\1');
        QByteArray content = LdWriter::log(channels);
        const auto first = qFromLittleEndian<quint32>(content.constData() + 8);
        for (quint32 i = 0; i < 100; ++i) {
            LdWriter::put(content, first + 124 * i + 8, LdInteger<quint32>(2000));
            LdWriter::put(content, first + 124 * i + 12, LdInteger<quint32>(50000));
        }
        LdWriter::put(content, first + 124 * 99 + 4, LdInteger<quint32>(first)); // back to the first
        const BinaryLog log(files.write(u"shared.ld"_s, content));
        QVERIFY(log.isCircular());
        qint64 samples = 0;
        for (const BinaryRecord &record : log.records())
            samples += record.readableSamples;
        QVERIFY(samples >= 50000 && samples <= 2 * content.size());
    }

    void sidecar()
    {
        const Sidecar sidecar = readSidecar(files.write(u"log.ldx"_s, R"(<LDXFile><Layers><Layer><MarkerBlock>
            <MarkerGroup Name="Notes"><Marker Time="5e6"/></MarkerGroup>
            <MarkerGroup Name="Beacons"><Marker Time="0.0"/><Marker Time="156940000.000000"/><Marker Time="x"/>
            </MarkerGroup></MarkerBlock></Layer><Details><String Id="Event" Value="Sprint"/><Item Id="Session"/>
            <Item Id="CarSetup_Wing" Value="3"/><Item Id="Fuel" Value="8" Unit=""/></Details></Layers><LDXFile>)"));
        QVERIFY(sidecar.exists);
        QVERIFY(!sidecar.error.isEmpty()); // the last tag opens instead of closing
        QCOMPARE(sidecar.sessionWord.value_or(QString()), u"Sprint"_s);
        QCOMPARE(sidecar.beacons(), (std::vector<double>{0.0, 156.94}));
        QCOMPARE(sidecar.items.size(), 2);
        QVERIFY(!sidecar.items[0].unit && sidecar.items[1].unit);
        QVERIFY(!readSidecar(files.path(u"none.ldx"_s)).exists);
        // Beacons by any of their names, the first word for the session, and no group without a time.
        for (const char *group : {"Type='BCN'", "Name='x' Type='Lap Beacons'", "Name='BEACON'"}) {
            const Sidecar named = readSidecar(
                files.write(u"named.ldx"_s, "<L><MarkerGroup Name='Beacons'/><MarkerGroup " + QByteArray(group) +
                                                "><Marker Time='1e6'/></MarkerGroup><i Id='Event' Value='Race'/>"
                                                "<i Id='Event' Value='Test'/></L>"));
            QCOMPARE(named.beacons(), std::vector<double>{1.0});
            QCOMPARE(named.sessionWord.value_or(QString()), u"Race"_s);
        }
        QCOMPARE(readSidecar(files.write(u"classed.ldx"_s, "<L><MarkerGroup><Marker ClassName='BCN' Time='2e6'/>"
                                                           "</MarkerGroup></L>"))
                     .beacons(),
                 std::vector<double>{2.0});
    }

    // A damaged or oversized sidecar gives the items that the import has from it, and a reason unless these are all.
    void sidecarsAsImported_data()
    {
        const Table<QByteArray, bool, QString> row("content", "isComplete", "error"); // a part of ours, not of Qt's
        QByteArray items;
        for (int i = 0; i < 400; ++i)
            items += "<Item Id=\"i" + QByteArray::number(i) + "\" Value=\"1.5\" Unit=\"V\"/>\n";
        const auto whole = [](const QByteArray &content) { return "<Log>" + content + "</Log>"; };
        const auto damaged = [&](qsizetype at) { return whole(items).replace(at, 1, "\xb0"); };
        const auto nested = [&](int depth) {
            return QByteArray("<a>").repeated(depth - 1) + items + QByteArray("</a>").repeated(depth - 1);
        };
        const auto withText = [&](qsizetype bytes) {
            return whole(items + "<!--" + QByteArray(bytes, 'x') + "--><Item Id=\"last\"/>");
        };
        const QString larger = u"larger than any"_s;
        row("whole", whole(items), true, {});
        row("byte of Latin-1 in the first piece", damaged(4600), false, {});
        row("and in the second", damaged(9000), false, {});
        row("cut off", items.first(6000), false, {});
        row("as deep as may be", nested(64), true, {});
        row("deeper", nested(65), false, u"nested deeper"_s);
        row("long comment", withText(8000), true, {});
        row("too long a comment", withText(70000), false, larger);
        row("too large", whole(items + "<b>" + QByteArray("<c>x</c>").repeated(1 << 18) + "</b><Item Id=\"last\"/>"),
            false, larger);
    }
    void sidecarsAsImported()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, isComplete);
        QFETCH(QString, error);
        const QString path = files.write(u"damaged.ldx"_s, content);
        const Sidecar sidecar = readSidecar(path);
        QStringList names;
        for (const SidecarItem &item : sidecar.items)
            names.append(item.id);
        names.sort();
        QCOMPARE(names, QStringList(loadValues(path).keys()));
        QCOMPARE(sidecar.error.isEmpty(), isComplete);
        QVERIFY2(sidecar.error.contains(error), qPrintable(sidecar.error));
    }

    void names()
    {
        QCOMPARE(otherName(u"LAP_BEACON")->role, LapRole::Beacon);
        QCOMPARE(otherName(u"Car Pos Norm")->scale, 100.0);
        QCOMPARE(drivingChannelOfTitle(u"lap-dist pct"), &drivingChannel(LapRole::Position));
        QCOMPARE(drivingChannelOfRecord(u"Lap"), &drivingChannel(LapRole::LapNumber));
        QVERIFY(!otherName(u"Ground Speed") && !drivingChannelOfTitle(u"Lap") &&
                !drivingChannelOfRecord(u"lap number"));
    }

private:
    Testing::Files files;
};

QTEST_GUILESS_MAIN(tst_Readers)
#include "tst_readers.moc"
