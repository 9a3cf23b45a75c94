// Logs written anew: where their laps come from, that nothing of the source is lost, and what is refused.

#include "inspect/exportwriter.h"
#include "inspect/rewrite.h"
#include "inspect/rewriteerror.h"
#include "inspect/textlog.h"
#include "ld/ldx.h"
#include "plugin/plugininterfaceimport.h"

#include "testing.h"
#include "tests/ld/ldwriter.h"

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QPluginLoader>
#include <QtCore/QStringEncoder>

#include <cmath>
#include <functional>

using namespace Inspect;
using namespace Qt::StringLiterals;
using LdWriter::channel;
using Testing::Table;

namespace {

using Laps = QList<QSharedPointer<KOV::SDK::Lap>>;

Laps importedLaps(const QString &path)
{
    static QPluginLoader loader(QStringLiteral(ORVA_LIBRARY));
    auto *plugin = qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance());
    return plugin->import(path, {}, {});
}

// "number:time/rows" of each lap.
QString outline(const Laps &laps)
{
    QStringList texts;
    for (const auto &lap : laps) {
        const bool hasTime = lap->header().lapTime.isValid() && lap->header().lapTime != QTime(0, 59, 59);
        texts.append(u"%1:%2/%3"_s.arg(lap->header().lapNumber)
                         .arg(hasTime ? lap->header().lapTime.toString(u"m.ss.zzz"_s) : u"-"_s)
                         .arg(lap->size()));
    }
    return texts.join(u' ');
}

// A drive of 30 s with the line at 10.5 and 20.25 s, in a lap that began half a second before it.
double lapIndex(double time)
{
    return time >= 20.25 ? 2.0 : time >= 10.5 ? 1.0 : 0.0;
}
double lapTime(double time)
{
    return time - (time >= 20.25 ? 20.25 : time >= 10.5 ? 10.5 : -0.5);
}
double lapShare(double time)
{
    return lapTime(time) / (time >= 10.5 ? 9.75 : 11.0);
}

struct Column
{
    QString title; // and its unit after a slash
    std::function<double(double)> value;
};

// Rows at `rate` per second, every cell in quotes with a decimal point, without and with the columns given.
QByteArray drive(const QByteArray &header, const QList<Column> &columns, int rate = 60, double seconds = 30.0)
{
    QByteArray titles = "\"Time\",\"Speed\"";
    QByteArray units = "\"s\",\"km/h\"";
    for (const Column &column : columns) {
        titles += ",\"" + column.title.section(u'/', 0, 0).toUtf8() + '"';
        units += ",\"" + column.title.section(u'/', 1).toUtf8() + '"';
    }
    QByteArray text = header + "\n\n\n" + titles + '\n' + units + "\n\n\n";
    for (int i = 0; i < seconds * rate; ++i) {
        const double time = static_cast<double>(i) / rate;
        text += '"' + QByteArray::number(time, 'f', 3) + "\",\"" + QByteArray::number(i) + '"';
        for (const Column &column : columns)
            text += ",\"" + QByteArray::number(column.value(time), 'f', 5) + '"';
        text += '\n';
    }
    return text;
}

const QByteArray rate60("\"Sample Rate\",\"60.000\",\"Hz\"");
const Column counter{u"Session Lap Count"_s, lapIndex};
const Column runningTime{u"Lap Time/s"_s, lapTime};
const Column lastTime{u"Last Lap Time/s"_s, [](double time) {
                          return time < 10.9 ? 0.0 : time < 20.6 ? 11.003 : 9.75;
                      }};
const Column position{u"Car Pos Norm"_s, lapShare};

QByteArray sidecarOf(const QByteArray &marks)
{
    QByteArray text = "<LDXFile><Layers><Layer><MarkerBlock><MarkerGroup Name=\"Beacons\">";
    for (const QByteArray &mark : marks.split(' '))
        text += "<Marker Time=\"" + mark + "\"/>";
    return text + "</MarkerGroup></MarkerBlock></Layer><Details><Numeric Id=\"Fuel\" Value=\"38\" Unit=\"l\"/>"
                  "<String Id=\"Note\" Value=\"a &quot;b&quot;\"/></Details></Layers></LDXFile>";
}

} // namespace

class tst_Rewrite : public QObject
{
    Q_OBJECT

private:
    Testing::Files files;
    RewriteSummary summary;

    // Rewrites `content` and returns the path of what it became.
    QString rewritten(const QByteArray &content, RewriteOptions options = {}, const QByteArray &sidecar = {},
                      bool isBinary = false)
    {
        QFile::remove(files.path(u"log.ldx"_s));
        if (!sidecar.isEmpty())
            files.write(u"log.ldx"_s, sidecar);
        options.sourcePath = files.write(u"log"_s, content);
        options.targetPath = files.path(u"new.csv"_s);
        options.mayOverwrite = true;
        summary = rewriteLog(options, isBinary);
        return options.targetPath;
    }

private Q_SLOTS:
    void laps_data()
    {
        const QString told = u"0:0.10.500/630 1:0.09.750/585 2:-/585"_s;
        const Table<QByteArray, QByteArray, QString, QString> row("content", "sidecar", "laps", "origin");
        row("beacon markers", drive(rate60 + "\n\"Beacon Markers\",\"10.500, 20.250 \"", {}), {}, told,
            u"2 marks of the header row \"Beacon Markers\""_s);
        row("markers of the sidecar", drive(rate60 + "\n\"Beacon Markers\",\"00.000    \"", {}),
            sidecarOf("0 10500000.000 20250000"), told, u"3 marks of the sidecar's beacons"_s);
        row("beacon that steps", drive(rate60, {{u"LAP_BEACON"_s, lapIndex}}), {}, told,
            u"2 steps of \"LAP_BEACON\""_s);
        row("beacon that pulses",
            drive(rate60,
                  {{u"Beacon"_s, [](double time) { return lapShare(time) < 0.1 && time > 5.0 ? 100.0 : 0.0; }}}),
            {}, told, u"2 steps of \"Beacon\""_s);
        row("lap counter", drive(rate60, {counter}), {}, told, u"2 rises of \"Session Lap Count\""_s);
        row("lap distance", drive(rate60, {{u"Lap Distance/m"_s, [](double time) { return 2000 * lapShare(time); }}}),
            {}, told, u"2 falls of \"Lap Distance\""_s);
        // Its clock began before the log did.
        row("running time", drive(rate60, {runningTime}), {}, u"0:0.11.000/630 1:0.09.750/585 2:-/585"_s,
            u"2 falls of \"Lap Time\""_s);
        row("position, counter and times", drive(rate60, {position, counter, runningTime, lastTime}), {},
            u"0:0.11.003/630 1:0.09.750/585 2:-/585"_s, u"2 falls of \"Car Pos Norm\""_s);
        row("a counter late for the line",
            drive(rate60 + "\n\"Beacon Markers\",\"10.5 20.25\"",
                  {{u"Lap Number"_s, [](double time) { return 7 + lapIndex(time - 0.3); }}}),
            {}, u"0:0.10.500/630 8:0.09.750/585 9:-/585"_s, u"2 marks of the header row \"Beacon Markers\""_s);
        row("dead channels hide no live ones",
            drive(rate60,
                  {{u"Lap Dist Pct/%"_s, [](double) { return 0.0; }}, {u"Lap"_s, [](double) { return 3.0; }}, counter}),
            {}, told, u"2 rises of \"Session Lap Count\""_s);
        row("nothing", drive(rate60, {}), {}, u"0:-/1800"_s, {});
        row("one lap without a time", drive(rate60 + "\n\"Range\",\"Lap 7\"", {}), {}, u"0:-/1800"_s,
            u"one lap, named by the header row \"Range\""_s);
        row("one lap with its end",
            drive(rate60 + "\n\"Range\",\"Lap 7\",,,\"Start Time\",\"0.000\"\n\"a\",\"b\",,,\"End Time\",\"29.990\"",
                  {}),
            {}, u"0:0.29.990/1800 8:-/1"_s,
            u"one lap, named by the header row \"Range\", which ends at \"End Time\""_s);
        row("20 rows per second", drive("\"Sample Rate\",\"20,000\"", {position, counter}, 20), {},
            u"0:0.10.500/630 1:0.09.750/585 2:-/583"_s, u"2 falls of \"Car Pos Norm\""_s);
        row("100 rows per second", drive("\"Beacon Markers\",\"10.5 20.25\"", {}, 100), {},
            u"0:0.10.500/630 1:0.09.750/585 2:-/585"_s, u"2 marks of the header row \"Beacon Markers\""_s);
    }
    void laps()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, sidecar);
        QFETCH(QString, laps);
        QFETCH(QString, origin);
        const Laps imported = importedLaps(rewritten(content, {}, sidecar));
        QCOMPARE(outline(imported), laps);
        QCOMPARE(summary.laps, origin);
        QCOMPARE(imported.front()->header().dynamicData.valueNameList().size(), sidecar.isEmpty() ? 0 : 2);
    }

    void wishes_data()
    {
        const QByteArray log = drive(rate60 + "\n\"Beacon Markers\",\"15\"",
                                     {position, counter, {u"Way"_s, [](double time) { return 0.5 * lapShare(time); }}});
        const Table<QByteArray, QString, double, QString> row("content", "mapped", "scale", "laps");
        row("laps at", log, {}, 0.0, u"0:0.12.000/720 1:-/1080"_s);
        row("position", log, u"way"_s, 200.0, u"0:0.10.500/630 1:0.09.750/585 2:-/585"_s);
        row("position whose scale its range tells", log, u"Car Pos Norm"_s, 0.0,
            u"0:0.10.500/630 1:0.09.750/585 2:-/585"_s);
    }
    void wishes()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, mapped);
        QFETCH(double, scale);
        QFETCH(QString, laps);
        RewriteOptions options;
        if (mapped.isEmpty())
            options.lapsAt = std::vector<double>{12.0};
        else
            options.mappings = {{LapRole::Position, mapped, scale > 0.0 ? std::optional(scale) : std::nullopt}};
        QCOMPARE(outline(importedLaps(rewritten(content, options))), laps);
    }
};

QTEST_GUILESS_MAIN(tst_Rewrite)
#include "tst_rewrite.moc"
