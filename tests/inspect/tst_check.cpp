// What the checks find: a small log for each finding, and none for the sound samples.

#include "inspect/check.h"
#include "ld/loadlaps.h"
#include "plugin/plugininterfaceimport.h"

#include "testing.h"
#include "tests/ld/ldwriter.h"

#include <QtCore/QPluginLoader>

#include <functional>

using namespace Inspect;
using namespace Qt::StringLiterals;
using LdWriter::channel;
using Testing::Table;

namespace {

// "code line:column/record xCOUNT channels" of each finding.
QStringList outline(const CheckResult &result)
{
    QStringList lines;
    for (const Finding &finding : result.findings) {
        QString line = codeText(finding.code);
        if (finding.place.line > 0)
            line += u" %1:%2"_s.arg(finding.place.line).arg(finding.place.column);
        if (finding.place.record > 0)
            line += u" #%1"_s.arg(finding.place.record);
        if (finding.count != 1)
            line += u" x%1"_s.arg(finding.count);
        lines.append(line);
        for (const QString &text : {finding.found, finding.read, finding.remedy}) {
            if (!text.endsWith(u'.') || text.contains(u".."_s) || text.contains(u'%') != text.contains(u" % "_s))
                lines.append(u"not a sentence: "_s + text);
        }
    }
    return lines;
}

// An export of the four driving channels and Speed, of which @p rows holds the last; positions go twice round.
QByteArray soundExport(const QByteArray &header = "Sample Rate,0.1\n", const QByteArray &speeds = "9,9,9,9")
{
    QByteArray text =
        header + "\nTime,Lap Dist Pct,Lap Number,Lap Current Lap Time,Lap Last Lap Time,Speed\ns,%,,s,s,km/h\n\n";
    int row = 0;
    for (const QByteArray &speed : speeds.split(',')) {
        text +=
            QByteArray::number(10 * row) + ',' + QByteArray::number(1 + 90 * (row % 2)) + ",1,1.5,9," + speed + '\n';
        ++row;
    }
    return text;
}

const QByteArray drivingTitles("Lap Dist Pct,Lap Number,Lap Current Lap Time,Lap Last Lap Time");
const QStringList noDrivingChannels(4, u"missing-channel 3:0"_s);

std::vector<LdWriter::Channel> soundChannels()
{
    return {channel("lapdistpct", {1, 50, 99, 1, 50, 99, 1, 50}, "%"), channel("lap", {1, 1, 1, 2, 2, 2, 2, 2}),
            channel("lapcurrentlaptime", {1, 10, 20, 1, 10, 20, 1, 10}, "s"),
            channel("laplastlaptime", {21, 21, 21, 21, 21, 21, 21, 21}, "s"),
            channel("Speed", {1, 2, 3, 4, 5, 6, 7, 8})};
}

} // namespace

class tst_Check : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exports_data()
    {
        const Table<QByteArray, QStringList> row("content", "expected");
        row("sound", soundExport(), {});
        row("quoted points", soundExport().replace(",9\n", ",\"9.5\"\n"), {u"quoted-point 6:6 x4"_s});
        row("texts and empty cells", soundExport("K,V\n", "a,,7,0"), {u"not-a-number 6:6"_s, u"empty-cells 7:6"_s});
        row("split cells", soundExport("K,V\n", "1,2").replace(",1,1.5,", ",\"1,000.5\",1.5,"),
            {u"shifted-cells 6:3 x2"_s});
        row("no header", soundExport("").prepend("\n"), {u"no-header 1:0"_s});
        row("no empty line", soundExport().replace("\n\n", "\n"), {u"no-header 2:0"_s});
        row("no rows", soundExport().left(soundExport().indexOf("\n\n0,") + 2), {u"no-rows 3:0"_s});
        row("row in place of the separator", soundExport().replace("km/h\n\n", "km/h\n"), {u"rows-not-read 5:0"_s});
        row("uneven rows",
            soundExport().replace("\n0,1,1,1.5,9,9\n", "\n0,1,1,1.5,9\n").replace("9,9\n20,", "9,9,9\n20,"),
            {u"uneven-rows 6:0 x2"_s});
        row("last row cut off", soundExport().chopped(5), {u"uneven-rows 9:0"_s});
        row("thinned", soundExport("Sample Rate,360\n"),
            {u"no-laps-cut 3:2 x2"_s, u"thinned 1:2 x3"_s, u"time-gap 7:1 x3"_s});
        row("position that goes to and fro", soundExport("Sample Rate,60\n", "9,9,9,9,9,9,9,9"),
            {u"short-laps 3:2 x2"_s, u"time-gap 7:1 x7"_s});
        row("gap", soundExport().replace("\n30,", "\n300,"), {u"time-gap 9:1"_s});
        row("falling clock", soundExport().replace("\n30,", "\n10,"), {u"time-gap 9:1"_s});
        row("one name", soundExport().replace("Speed", "Time").replace("km/h", "min"), {u"duplicate-name 3:1"_s});
        row("all zero", soundExport("K,V\n", "0,0"), {u"constant-channel"_s});
        row("other names",
            "K,V\n\nTime,Car Pos Norm,Lap Number,Lap Time,Last Lap "
            "Time\ns,,,s,s\n\n0,.9,1,18,9\n10,.1,2,1,9\n20,.2,2,11,9\n",
            {u"no-laps-cut 3:2 x2"_s, u"missing-channel 3:0"_s, u"missing-channel 3:0"_s, u"missing-channel 3:0"_s,
             u"looks-like 3:2"_s, u"looks-like 3:4"_s, u"looks-like 3:5"_s});
        row("position as a fraction", soundExport().replace(",91,", ",.91,").replace(",1,1,", ",.01,1,"),
            {u"no-laps-cut 3:2 x2"_s});
        row("beacons", "Beacon Markers,0.5 1.5 99\n\nTime,A\ns,\n\n0,1\n1,1\n2,1\n",
            QStringList{u"no-laps-cut 1:2 x3"_s} + noDrivingChannels);
        row("beacons at the first row, the last and just after it",
            "Sample Rate,1\nBeacon Markers,100.4 101 102 103.4 103.6\n\nTime,A\ns,\n\n100,1\n101,1\n102,1\n",
            QStringList{u"no-laps-cut 2:2 x4"_s} + QStringList(4, u"missing-channel 4:0"_s));
        row("no marks", "Sample Rate,0.001\n\n" + drivingTitles + "\n,\n\n1,1,1,1\n2,1,2,1\n", {u"no-lap-marks"_s});
        row("as tools write it",
            "\"Sample Rate\",\"1.000\",\"Hz\",,\"End Time\",\"2.0\",\"s\"\r\n\"Beacon Markers\",\"1.5 \"\r\n\r\n\r\n"
            "\"Time\",\"Gear\",\"Speed\"\r\n\"s\",\"\",\"km/h\"\r\n\r\n\r\n"
            "\"0.000\",\"1\",\"27.4\"\r\n\"1.000\",\"1\",\"28.5\"\r\n\"2.000\",\"2\",\"29\"\r\n",
            QStringList{u"quoted-point 9:3 x4"_s, u"no-laps-cut 2:2 x2"_s} + QStringList(4, u"missing-channel 5:0"_s));
        row("empty", "\"\"\n", {u"not-a-log"_s});
        row("semicolons", "a;b\n1;2\n1;2\n1;2\n1;2\n1;2\n", {u"not-a-log"_s});
        row("web page", "<!DOCTYPE html>\n<html></html>\n", {u"not-a-log"_s});
    }
    void exports()
    {
        QFETCH(QByteArray, content);
        const QString path = files.write(u"log.csv"_s, content);
        QTEST(outline(checkText(path, import(path))), "expected");
    }

    // What every command says of a log on its way.
    void remarks_data()
    {
        const Table<QByteArray, QString> row("content", "expected");
        const QByteArray one = "Sample Rate,0.001\n\n" + drivingTitles + "\n,\n\n1,1,1,1\n2,1,2,1\n";
        row("two long laps", soundExport("Sample Rate,0.001\n"), {});
        row("one long lap", one, u"one lap of 33 min 20 s"_s);
        row("one long lap that is thinned", QByteArray(one).replace("0.001", "0.00360"), u"one lap of 27 min 47 s"_s);
        row("quoted points far down", soundExport("K,V\n", QByteArray("9,").repeated(50) + "\"9.5\""),
            u"fields read as zero because of their quotes: \"9.5\" in line 56"_s);
        row("some channels missing", soundExport().replace("Lap Number", "A").replace("Lap Last Lap Time", "B"),
            u"no channel \"Lap Number\", \"Lap Last Lap Time\""_s);
        row("none, and quoted points", "K,V\n\nA,B\n,\n\n1,\"2.5\"\n2,3\n",
            u"fields read as zero because of their quotes: \"2.5\" in line 6; none of the channels that laps come from"_s);
    }
    void remarks()
    {
        QFETCH(QByteArray, content);
        const QString path = files.write(u"remark.csv"_s, content);
        QTEST(remarkOnText(path, import(path)), "expected");
    }

    // Where a limit ends the import, the file has rows left over.
    void unreadRows()
    {
        const QString path = files.write(u"unread.csv"_s, soundExport());
        Laps laps = import(path);
        laps.removeLast();
        QCOMPARE(outline(checkText(path, laps)).first(), u"rows-not-read 8:0 x2"_s);
    }

    void sidecars_data()
    {
        const Table<QByteArray, QStringList> row("content", "expected");
        row("sound", R"(<a><b Id="Event" Value="Race"/><b Id="Ratio" Value="4"/><b Id="P" Value="1" Unit="bar"/></a>)",
            {});
        row("word", R"(<a><b Id="Event" Value="race"/></a>)", {u"unknown-session"_s});
        row("no units", R"(<a><b Id="Ratio" Value="4"/><b Id="Tyre" Value="soft"/></a>)", {u"item-without-unit"_s});
        row("broken", "<a>\n<b Id=\"Ratio\"></a>", {u"broken-sidecar 2:0"_s});
    }
    void sidecars()
    {
        QFETCH(QByteArray, content);
        files.write(u"car.ldx"_s, content);
        const QString path = files.write(u"car.csv"_s, soundExport());
        QTEST(outline(checkText(path, import(path))), "expected");
    }

    void binaryLogs_data()
    {
        const Table<QByteArray, QStringList> row("content", "expected");
        const auto with = [](const std::function<void(std::vector<LdWriter::Channel> &)> &change) {
            auto channels = soundChannels();
            change(channels);
            return LdWriter::log(channels);
        };
        row("sound", LdWriter::log(soundChannels()), {});
        row("no records", LdWriter::log({}), {u"no-records"_s});
        row("floating point", with([](auto &all) { all[4].header.typeCode = 7, all[4].header.sampleWidth = 4; }),
            {u"records-dropped #5"_s});
        row("no rate", with([](auto &all) { all[4].header.sampleRate = 0; }), {u"records-dropped #5"_s});
        row("no counter", with([](auto &all) { LdWriter::setText(all[1].header.name, "Lap Number"); }),
            {u"no-lap-channel"_s, u"no-laps-cut #1 x2"_s, u"looks-like #2"_s});
        row("counter of another kind", with([](auto &all) { all[1].header.typeCode = 7; }),
            {u"records-dropped #2"_s, u"no-lap-channel #2"_s, u"no-laps-cut #1 x2"_s});
        row("too short", with([](auto &all) { all[1].header.sampleCount = 3; }),
            {u"no-lap-channel #2"_s, u"no-laps-cut #1 x2"_s});
        row("no lap times", with([](auto &all) { LdWriter::setText(all[3].header.name, "Other"); }),
            {u"missing-channel"_s});
        row("absurd count", with([](auto &all) { all[4].header.sampleCount = 0xFFFFFFFF; }),
            {u"implausible-count #5"_s});
        row("cut off", with([](auto &all) { all[4].header.sampleCount = 10; }), {u"cut-off #5 x2"_s});
        row("case", with([](auto &all) { all.push_back(channel("SPEED", {1, 2, 3})); }), {u"duplicate-name #6"_s});
        row("all zero", with([](auto &all) {
                all.push_back(channel("Spare", {0, 0, 0, 0, 0, 0, 0, 0}));
            }),
            {u"constant-channel"_s});
        LdHeadBlock head;
        LdWriter::setText(head.sessionText, "Sprint");
        row("slow counter", with([](auto &all) {
                for (LdWriter::Channel &slow : all)
                    slow.header.sampleRate = 10;
            }),
            {u"short-laps #2 x5"_s});
        row("session", LdWriter::log(soundChannels(), head), {u"unknown-session"_s});
    }
    void binaryLogs()
    {
        QFETCH(QByteArray, content);
        const QString path = files.write(u"log.ld"_s, content);
        QTEST(outline(checkBinary(path, loadLaps(path))), "expected");
    }

    void otherFiles_data()
    {
        const Table<QByteArray, QString> row("head", "expected");
        row("spreadsheet", "PK\3\4......[Content_Types].xml", u".xlsx"_s);
        row("archive", "PK\3\4......race.csv", u"ZIP"_s);
        row("compressed", "\x1F\x8B", u"gzip"_s);
        row("document", "%PDF-1.7", u"PDF"_s);
        row("spreadsheet by its parts", "PK\3\4......xl/workbook.xml", u".xlsx"_s);
        row("open spreadsheet", "PK\3\4mimetypeapplication/vnd.oasis.opendocument.spreadsheet", u".ods"_s);
        row("sidecar", "<?xml version='1.0'?>\n<LDXFile>", u"sidecar"_s);
        row("web page after a mark", "\xEF\xBB\xBF\n<!doctype HTML>", u"web page"_s);
        row("XML", "<a></a>", u"XML"_s);
        row("JSON", "[{\"a\":1}]", u"JSON"_s);
        row("tabs", "a\tb\tc\n1\t2\t3\n1\t2\t3\n1\t2\t3\n1\t2\t3\n", u"with tabs"_s);
        row("as many commas", QByteArray("a;b,c\n").repeated(9), u"unknown kind"_s);
        row("data", "\1\2\3", u"unknown kind"_s);
    }
    void otherFiles()
    {
        QFETCH(QByteArray, head);
        QFETCH(QString, expected);
        const CheckResult result = checkOther(files.write(u"other"_s, head));
        QCOMPARE(outline(result), QStringList{u"not-a-log"_s});
        QVERIFY2(result.findings.first().found.contains(expected), qPrintable(result.findings.first().found));
    }

    void samples()
    {
        const QString path = QStringLiteral(ORVA_SAMPLES "/club-race.csv");
        QCOMPARE(outline(checkText(path, import(path))), QStringList());
        QCOMPARE(remarkOnText(path, import(path)), QString());
        const QString binary = QStringLiteral(ORVA_SAMPLES "/club-race.ld");
        QCOMPARE(outline(checkBinary(binary, loadLaps(binary))), QStringList());
        QCOMPARE(remarkOnBinary(binary, loadLaps(binary)), QString());
    }

    void everyCodeIsDocumented()
    {
        QFile page(QStringLiteral(ORVA_DOCS "/check.md"));
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray text = page.readAll();
        qsizetype last = 0;
        for (int code = 0; code < static_cast<int>(FindingCode::Count); ++code) {
            const QLatin1String name = codeText(static_cast<FindingCode>(code));
            const qsizetype heading = text.indexOf("\n## `" + QByteArray(name.data(), name.size()) + "`\n");
            QVERIFY2(heading > last, name.data()); // in the order in which findings are listed
            last = heading;
        }
    }

private:
    Laps import(const QString &path)
    {
        return qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance())->import(path, {}, {});
    }

    Testing::Files files;
    QPluginLoader loader{QStringLiteral(ORVA_LIBRARY)};
};

QTEST_GUILESS_MAIN(tst_Check)
#include "tst_check.moc"
