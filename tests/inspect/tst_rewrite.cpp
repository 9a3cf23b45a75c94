// Logs written anew: where their laps come from, that nothing of the source is lost, and what is refused.

#include "inspect/exportwriter.h"
#include "inspect/rewrite.h"
#include "inspect/rewriteerror.h"
#include "inspect/sidecar.h"
#include "inspect/textlog.h"
#include "ld/ldx.h"
#include "plugin/plugininterfaceimport.h"

#include "testing.h"
#include "tests/ld/ldwriter.h"

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QPluginLoader>
#include <QtCore/QStringEncoder>

#include <bit>
#include <cmath>
#include <functional>
#include <random>

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

// A channel of single-precision numbers.
LdWriter::Channel singles(const char *name, int rate, int count, const std::function<float(int)> &value)
{
    std::vector<quint32> bits;
    for (int i = 0; i < count; ++i)
        bits.push_back(std::bit_cast<quint32>(value(i)));
    LdWriter::Channel made = channel(name, {}, "m", quint16(rate));
    made.header.typeCode = 7;
    made.header.sampleWidth = 4;
    made.header.sampleCount = quint32(count);
    made.samples = LdWriter::raw(bits);
    return made;
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

    // The last file, @p content, as the transcript has it.
    QByteArray becomes(QByteArray content) const
    {
        const QByteArray remarks =
            summary.remarks.isEmpty() ? QByteArray() : summary.remarks.join(u'\n').toUtf8() + '\n';
        return "-- becomes\n" + content.replace("\r\n", "\n") + "-- remarks\n" + remarks;
    }

    // Its entries, each from its name on.
    static QList<QByteArray> transcript()
    {
        QFile file(QStringLiteral(REWRITES));
        QList<QByteArray> entries;
        if (file.open(QIODevice::ReadOnly)) {
            for (const QString &entry : QString::fromUtf8("\n" + file.readAll()).split(u"\n== "_s).sliced(1))
                entries.append(entry.toUtf8() + (entry.endsWith(u'\n') ? "" : "\n"));
        }
        return entries;
    }

private Q_SLOTS:
    void laps_data()
    {
        const QString told = u"0:0.10.500/630 1:0.09.750/585 2:-/585"_s;
        const Table<QByteArray, QByteArray, QString, QString> row("content", "sidecar", "laps", "origin");
        row("beacon markers", drive(rate60 + "\n\"Beacon Markers\",\"10.500, 20.250 \"", {}), {}, told,
            u"2 marks of the header row \"Beacon Markers\""_s);
        row("markers of the sidecar", drive(rate60 + "\n\"Beacon Markers\",\"00.000    \"", {}),
            sidecarOf("0 10500000.000 20250000"), told, u"2 marks of the sidecar's beacons"_s);
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
        row("a position that never falls",
            drive(rate60, {{u"Car Pos Norm"_s, [](double time) { return 0.01 * time; }}, counter}), {}, told,
            u"2 rises of \"Session Lap Count\""_s);
        const Column unsettled{u"Car Pos Norm"_s, [](double time) {
                                   return (time > 10.6 && time < 11.0) || time > 29.9 ? 0.998 : lapShare(time);
                               }};
        row("a car that rolls back over the line", drive(rate60, {unsettled}), {},
            u"0:0.10.500/630 1:0.09.750/585 2:-/585"_s, u"2 falls of \"Car Pos Norm\""_s);
        row("the same at 20 rows per second", drive("\"Sample Rate\",\"20.000\"", {unsettled}, 20), {},
            u"0:0.10.500/630 1:0.09.750/585 2:-/583"_s, u"2 falls of \"Car Pos Norm\""_s);
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
        row("position whose scale follows from its range", log, u"Car Pos Norm"_s, 0.0,
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

    void shapes_data()
    {
        const Table<bool, char, QByteArray, int, QStringConverter::Encoding, QByteArray> row(
            "isQuoted", "decimalSign", "lineEnd", "emptyLines", "encoding", "sampleRate");
        constexpr auto utf8 = QStringConverter::Utf8;
        row("quoted, points", true, '.', "\r\n", 2, utf8, "60.000");
        row("quoted, commas", true, ',', "\r\n", 2, utf8, "60,000");
        row("bare, LF", false, '.', "\n", 1, utf8, "60");
        row("UTF-16", true, '.', "\r\n", 2, QStringConverter::Utf16, "60.000");
        row("20 rows per second", true, ',', "\r\n", 2, utf8, "20,000");
        row("12 rows per second, as \"Time\" says", true, '.', "\n", 1, utf8, "0");
    }
    // A sound sample in a bad shape, with beacons in place of its lap channels, becomes what it was.
    void shapes()
    {
        QFETCH(bool, isQuoted);
        QFETCH(char, decimalSign);
        QFETCH(QByteArray, lineEnd);
        QFETCH(int, emptyLines);
        QFETCH(QStringConverter::Encoding, encoding);
        QFETCH(QByteArray, sampleRate);
        const QString sample = QStringLiteral(ORVA_SAMPLES "/club-race.csv");
        const Laps good = importedLaps(sample);
        QByteArray marks;
        double line = 0.0;
        for (const auto &lap : good.mid(1)) {
            line += lap->channel(u"laplastlaptime"_s)->samples().back();
            marks += QByteArray::number(line, 'f', 4) + ' ';
        }
        const int step = sampleRate.startsWith('2') ? 3 : sampleRate == "0" ? 5 : 1;

        TextLog log(sample);
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        BlockWriter block(buffer);
        ExportWriter writer(block, {isQuoted, decimalSign, lineEnd, emptyLines});
        writer.writeLine({"Venue", "Mill Lane"});
        writer.writeLine({"Sample Rate", sampleRate, "Hz"});
        writer.writeLine({"Beacon Markers", marks});
        writer.writeGap();
        std::vector<std::size_t> kept;
        QList<QByteArray> titles;
        QList<QByteArray> units;
        for (std::size_t i = 0; i < log.columns().size(); ++i) {
            if (log.columns()[i].title.startsWith(u"Lap "))
                continue;
            kept.push_back(i);
            titles.append(log.columns()[i].title.toUtf8());
            units.append(log.columns()[i].unit.toUtf8());
        }
        writer.writeLine(titles);
        writer.writeLine(units);
        writer.writeGap();
        for (int i = 0; log.nextRow(); ++i) {
            if (i % step != 0)
                continue;
            writer.beginRow(kept.size(), kept.size() * ExportWriter::cellRoom);
            for (const std::size_t column : kept) {
                QByteArray text = QByteArray::fromStdString(std::string(log.cells()[column].text));
                writer.addText(text.replace('.', decimalSign).toStdString());
            }
            writer.endRow();
        }
        QVERIFY(block.flush());
        QByteArray content = buffer.data();
        if (encoding != QStringConverter::Utf8)
            content = QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(QString::fromUtf8(content));

        const auto bytesOf = [](const QString &path) {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const QByteArray once = bytesOf(rewritten(content));
        QCOMPARE(bytesOf(rewritten(once)), once);
        const Laps bad = importedLaps(files.path(u"new.csv"_s));
        QCOMPARE(bad.front()->header().venueName, u"Mill Lane"_s);
        QCOMPARE(bad.size(), good.size());
        for (qsizetype i = 0; i < good.size(); ++i) {
            QCOMPARE(bad[i]->header().lapTime, good[i]->header().lapTime);
            QCOMPARE(bad[i]->header().lapNumber, good[i]->header().lapNumber);
            QVERIFY(i + 1 == good.size() || bad[i]->size() == good[i]->size());
        }
        const auto all = [](const Laps &laps, const QString &name, std::size_t every) {
            std::vector<double> samples;
            for (const auto &lap : laps)
                samples.insert(samples.end(), lap->channel(name)->samples().begin(),
                               lap->channel(name)->samples().end());
            std::vector<double> picked;
            for (std::size_t i = 0; i < samples.size(); i += every)
                picked.push_back(samples[i]);
            return picked;
        };
        for (const QString &name : good.front()->getAvailableRecordedChannels()) {
            if (!name.startsWith(u"lap"))
                QVERIFY(Testing::sameSamples(all(bad, name, std::size_t(step)), all(good, name, std::size_t(step))));
        }
    }

    void binaryLog()
    {
        const auto speed = [](int i) { return 0.1F * float(i); };
        LdWriter::Channel unknown = channel("Odd", {1, 2});
        unknown.header.sampleWidth = 3;
        LdHeadBlock head;
        LdWriter::setText(head.venueText, "Mill, Lane");
        LdWriter::setText(head.sessionText, "Race");
        const QString path =
            rewritten(LdWriter::log({singles("Short", 10, 100, speed), singles("Speed", 20, 400, speed), unknown,
                                     singles("speed", 60, 1200, [](int i) { return i == 7 ? NAN : float(i); }),
                                     singles("LAP_BEACON", 100, 2000, [](int i) { return i < 1203 ? 0.0F : 1.0F; })},
                                    head),
                      {}, {}, true);
        const Laps laps = importedLaps(path);
        QCOMPARE(outline(laps), u"0:0.12.030/722 1:-/478"_s);
        QCOMPARE(laps.front()->header().venueName, u"Mill; Lane"_s);
        QCOMPARE(laps.front()->header().session, KOV::SDK::Session::Race);
        QStringList titles;
        const TextLog written(path);
        for (const TextColumn &column : written.columns())
            titles.append(column.title);
        QCOMPARE(titles.mid(4), QStringList({u"Time"_s, u"Speed"_s, u"speed 2"_s, u"LAP_BEACON"_s, u"Short"_s}));
        QCOMPARE(float(laps.front()->channel(u"speed"_s)->value(30)), 1.0F);
        QCOMPARE(float(laps.front()->channel(u"speed"_s)->value(31)), 1.0F + 0.1F / 3);
        QVERIFY(laps.front()->channel(u"short"_s)->isValid(594));
        QVERIFY(!laps.front()->channel(u"short"_s)->isValid(595));
        QCOMPARE(summary.remarks.size(), 4); // the odd record, the second speed, the short channel, the NaN
    }

    // Whole files: what they become, and what is said of it (rewrites.txt).
    void wholeFiles_data()
    {
        const Table<QByteArray, QByteArray> row("content", "expected");
        for (const QByteArray &entry : transcript()) {
            const qsizetype begin = entry.indexOf('\n') + 1;
            const qsizetype end = entry.indexOf("\n-- becomes\n");
            if (!entry.startsWith("log: "))
                row(entry.first(begin - 1), entry.sliced(begin, end - begin), entry.sliced(end + 1));
        }
    }
    void wholeFiles()
    {
        QFETCH(QByteArray, content);
        QFile file(rewritten(content));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QFETCH(QByteArray, expected);
        const QByteArray result = becomes(file.readAll());
        QVERIFY2(result == expected, result);
    }

    // The same of .ld logs: what follows after the header.
    void wholeLogs_data()
    {
        const Table<std::vector<LdWriter::Channel>, QByteArray, std::vector<double>> row("channels", "sidecarMarks",
                                                                                         "lapsAt");
        const auto none = std::numeric_limits<float>::quiet_NaN();
        row("position at another rate",
            {channel("Car Pos Norm", {50, 98, 2}, {}, 30, 2), channel("Rpm", {1, 2, 3, 4, 5, 6, 7})}, {}, {});
        row("position with a hole",
            {singles("Lap Dist Pct", 60, 4, [none](int i) { return i == 1   ? none
                                                                   : i == 3 ? 2.0F
                                                                            : float(97 + i); })},
            {}, {});
        row("its own time", {channel("B", {1, 2, 3}), channel("TIME", {5017, 5033, 5050}, "s", 60, 3)}, {}, {});
        row("time in minutes", {channel("Time", {0, 2, 3}, "min", 60, 2)}, {}, {});
        row("time that is short", {channel("Time", {0, 17}, "s", 60, 3), channel("B", {1, 2, 3})}, {}, {});
        row("time that jumps", {channel("Time", {0, 17, 93}, "s", 60, 3), channel("Gone", {1}, {}, 0)}, {}, {});
        row("marks of the sidecar", {channel("B", {1, 2, 3})}, "45000", {});
        row("marks of the user", {channel("B", {1, 2, 3})}, "20000", {0.01});
        row("a sample that is NaN", {singles("F", 60, 3, [none](int i) { return i == 1 ? none : 1e-7F * float(i); })},
            {}, {});
    }
    void wholeLogs()
    {
        QFETCH(std::vector<LdWriter::Channel>, channels);
        QFETCH(QByteArray, sidecarMarks);
        QFETCH(std::vector<double>, lapsAt);
        RewriteOptions options;
        if (!lapsAt.empty())
            options.lapsAt.emplace(lapsAt); // an assignment makes GCC 12 warn under AddressSanitizer
        const QByteArray sidecar = sidecarMarks.isEmpty() ? QByteArray() : sidecarOf(sidecarMarks);
        QFile file(rewritten(LdWriter::log(channels), options, sidecar, true));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray header = "Venue,\r\nVehicle,\r\nDriver,\r\nSession,\r\nSample Rate,60.000,Hz\r\n";
        const QByteArray content = file.readAll();
        QVERIFY(content.startsWith(header));
        const QByteArray result = "log: "_ba + QTest::currentDataTag() + '\n' + becomes(content.sliced(header.size()));
        QVERIFY2(transcript().contains(result), result);
    }

    void numbers()
    {
        std::mt19937_64 random(3);
        QBuffer buffer;
        QVERIFY(buffer.open(QIODevice::WriteOnly));
        BlockWriter block(buffer);
        ExportWriter writer(block, {true, ',', "\n", 1});
        QByteArray expected;
        for (int i = 0; i < 20000; ++i) {
            const int decimals = i % 10;
            quint64 magnitude = (random() % 1'000'000'000'000'000) >> (random() % 50);
            if (i % 3 == 0)
                magnitude -= magnitude % 1000; // zeros at the end
            const double value = static_cast<double>(magnitude) / std::pow(10.0, decimals);
            QByteArray text = QByteArray::number(magnitude).rightJustified(decimals + 1, '0');
            if (decimals > 0)
                text.insert(text.size() - decimals, ',');
            expected += "\"-" + text + "\",";
            while (decimals > 0 && text.endsWith('0'))
                text.chop(1);
            if (text.endsWith(','))
                text.chop(1);
            expected += '"' + text + "\",\"" + (magnitude > 0 ? "-" : "") + text + "\"\n";
            writer.beginRow(3, 3 * ExportWriter::cellRoom);
            writer.addFixed(true, magnitude, decimals);
            writer.addRounded(value, decimals);
            writer.addRounded(-value, decimals);
            writer.endRow();
        }
        QVERIFY(block.flush());
        QCOMPARE(buffer.data().split('\n'), expected.split('\n'));
    }

    // Many blocks of rows and bytes go through the threads that read and write; one row is longer than a block.
    void longLog_data()
    {
        const Table<int> row("rate");
        row("kept rows", 60);
        row("interpolated rows", 20);
    }
    void longLog()
    {
        QFETCH(int, rate);
        constexpr int rowCount = 30000;
        const QList<Column> columns(8, {u"Count"_s, [](double time) { return 60.0 * time; }});
        QByteArray content =
            drive("\"Sample Rate\",\"" + QByteArray::number(rate) + '"', columns, rate, rowCount / 60.0);
        const qsizetype middle = content.indexOf("\n\"", content.size() / 2) + 2;
        content.insert(middle, QByteArray(300000, ' '));
        TextLog log(rewritten(content));
        int rows = 0;
        for (; log.nextRow(); ++rows) {
            QCOMPARE(log.cells().size(), 10U);
            for (std::size_t i = 2; i < 10; ++i)
                QCOMPARE(qRound64(1e4 * *numberIn(log.cells()[i])), rows * 10000LL);
        }
        QCOMPARE(rows, rate == 60 ? rowCount : rowCount - 2);
        QVERIFY(QFile(files.path(u"new.csv"_s)).size() > (2 << 20));
    }

    // A device that is full in the third megabyte: what it took is right, and the error is told.
    void fullDevice()
    {
        class Device : public QIODevice
        {
        public:
            QByteArray taken;

        protected:
            qint64 readData(char *, qint64) override { return -1; }
            qint64 writeData(const char *data, qint64 count) override
            {
                if (taken.size() > (2 << 20)) {
                    setErrorString(u"full"_s);
                    return -1;
                }
                taken.append(data, count);
                return count;
            }
        };
        Device device;
        QVERIFY(device.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        BlockWriter writer(device);
        QByteArray all;
        for (int i = 0; i < 600000; ++i) {
            const QByteArray text = QByteArray::number(i);
            all += text;
            writer.write(text);
        }
        QVERIFY(!writer.flush());
        QVERIFY(writer.isFull());
        QCOMPARE(writer.errorText(), u"full"_s);
        QVERIFY(device.taken.size() > (2 << 20));
        QVERIFY(all.startsWith(device.taken));
    }

    void refusals_data()
    {
        const QByteArray log = drive(rate60 + "\n\"Beacon Markers\",\"15 12.5\"", {position}, 60, 1.0);
        const QByteArray falling = drive(rate60 + "\n\"Beacon Markers\",\"15 12.5\"", {counter});
        const Table<QByteArray, bool, QString, QString> row("content", "isBinary", "mapped", "error");
        row("no rows", "\"Sample Rate\",\"60\"\n\n\"Time\",\"Speed\"\n\"s\",\"m\"\n\n", false, {},
            u"no data rows; expected a header, channel names, units and rows"_s);
        row("no time and no rate", "\"a\",\"b\"\n\n\"x\",\"y\"\n\"\",\"\"\n\n1,2\n3,4\n", false, {},
            u"it has neither a column \"Time\" nor a \"Sample Rate\" to time its rows by"_s);
        row("rows too far apart", "\"Sample Rate\",\"0.05\"\n\n\"a\",\"b\"\n\"\",\"\"\n\n1,2\n", false, {},
            u"its rows come 20 s apart, expected at most 10 s"_s);
        row("falling marks", falling, false, {},
            u"the marks of the header row \"Beacon Markers\" contradict each other: 12.500 comes after 15.000"_s);
        row("no such channel", log, false, u"Nothing"_s,
            u"no channel \"Nothing\" for \"Lap Number\"; \"orva-host channels --stored\" lists them"_s);
        row("no channels", LdWriter::log({}), true, {}, u"no channel that can be read"_s);
    }
    void refusals()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, isBinary);
        QFETCH(QString, mapped);
        QFETCH(QString, error);
        Testing::Files folder;
        RewriteOptions options;
        options.sourcePath = folder.write(u"log"_s, content);
        options.targetPath = folder.path(u"new.csv"_s);
        if (!mapped.isEmpty())
            options.mappings = {{LapRole::LapNumber, mapped, {}}};
        QString text;
        try {
            rewriteLog(options, isBinary);
        } catch (const RewriteError &refusal) {
            text = refusal.text();
        }
        QCOMPARE(text, error);
        QCOMPARE(QDir(folder.path({})).entryList(QDir::Files | QDir::Hidden), QStringList(u"log"_s));
    }

    // Whatever a log holds, it is refused in words, or the import reads every row of what it becomes.
    void damaged()
    {
        std::mt19937 random(2);
        const auto below = [&random](qsizetype bound) {
            return static_cast<qsizetype>(random() % static_cast<std::size_t>(bound));
        };
        const QByteArray text = drive(rate60 + "\n\"Range\",\"Lap 7\"\n\"Beacon Markers\",\"0.1 1.5\"",
                                      {counter, position, lastTime}, 20, 2.0);
        const QByteArray binary =
            LdWriter::log({channel("lap", {1, 1, 2, 2, 2, 3}, {}, 2), channel("Time", {0, 1, 2}, "s", 1),
                           channel("Car Pos Norm", {0, 50, 99, 0, 60, 99, 5}, {}, 3, 2)});
        const QByteArray characters("0123456789.,\"\"\n\r -eE\xff\0", 22);
        int readable = 0;
        for (int i = 0; i < 300; ++i) {
            const bool isBinary = i % 3 == 0;
            QByteArray content = isBinary ? binary : text;
            for (qsizetype changes = below(20); changes > 0 && !content.isEmpty(); --changes) {
                const qsizetype at =
                    below(isBinary || below(2) > 0 ? content.size() : std::min<qsizetype>(content.size(), 300));
                const auto byte = isBinary ? static_cast<char>(below(256)) : characters[below(characters.size())];
                if (below(3) > 0 || isBinary)
                    content[at] = byte;
                else
                    content.replace(at, below(20), content.mid(below(content.size()), below(20)));
            }
            try {
                const Laps laps = importedLaps(rewritten(content, {}, {}, isBinary));
                long long rows = 0;
                for (const auto &lap : laps)
                    rows += lap->size();
                QCOMPARE(rows, summary.rows);
                ++readable;
            } catch (const RewriteError &refusal) {
                QVERIFY(!refusal.text().isEmpty());
            }
        }
        QVERIFY(readable > 100);
    }

    // Nothing that is there is lost without a word, and never the source or its sidecar.
    void overwriting()
    {
        Testing::Files folder;
        const QByteArray content = drive(rate60 + "\n\"Session\",\"Race\"", {counter}, 60, 12.0);
        const QByteArray sidecar = sidecarOf("1000000");
        for (const char *name : {"log.csv", "bare", "odd.ldx", "plain.csv"})
            folder.write(QString::fromLatin1(name), content);
        for (const char *name : {"log.ldx"})
            folder.write(QString::fromLatin1(name), sidecar);
        QVERIFY(QFile::link(folder.path(u"log.csv"_s), folder.path(u"link.csv"_s)));
        QVERIFY(QFile::link(folder.path(u"gone"_s), folder.path(u"dangling.csv"_s)));
        QVERIFY(QDir(folder.path({})).mkdir(u"folder"_s));
        const auto refusal = [&](const char *source, const char *target, bool force) {
            RewriteOptions options;
            options.sourcePath = folder.path(QString::fromLatin1(source));
            options.targetPath = folder.path(QString::fromLatin1(target));
            options.mayOverwrite = force;
            try {
                summary = rewriteLog(options, false);
            } catch (const RewriteError &error) {
                return QString(error.text()).remove(folder.path({}) + u'/');
            }
            return QString();
        };
        for (const char *name : {"log.csv", "link.csv", "./log.csv"})
            QVERIFY2(refusal("log.csv", name, true).endsWith(u" is the log itself, which is never overwritten"), name);
        QCOMPARE(refusal("log.csv", "log.ldx", true), u"log.ldx is the log's sidecar, which is never overwritten"_s);
        QCOMPARE(refusal("log.csv", "new.ldx", true),
                 u"new.ldx is where the new file's own sidecar belongs, expected a name such as new.csv"_s);
        QCOMPARE(refusal("odd.ldx", "odd.csv", true), u"the sidecar of odd.csv would be the log itself"_s);
        QCOMPARE(refusal("log.csv", "folder", true), u"folder is a folder, expected the name of a file"_s);
        QCOMPARE(refusal("log.csv", "dangling.csv", true), u"dangling.csv is not a regular file"_s);
        QCOMPARE(refusal("bare", "plain.csv", false), u"plain.csv is already there; --force overwrites it"_s);
        folder.write(u"other.ldx"_s, "mine");
        QCOMPARE(refusal("log.csv", "other.csv", false),
                 u"other.ldx, which would be the sidecar of other.csv, is already there; --force overwrites it"_s);
        QCOMPARE(refusal("log.csv", "other.csv", true), QString());
        QCOMPARE(summary.sidecarPath, folder.path(u"other.ldx"_s));
        QCOMPARE(summary.sidecarItems, 3); // with the session
        QCOMPARE(loadValues(folder.path(u"other.ldx"_s)), loadValues(folder.path(u"log.ldx"_s)));
        // A sidecar that serves both logs stays; where there is none yet, it is written.
        QCOMPARE(refusal("log.csv", "log.new.csv", false), QString());
        QVERIFY(summary.remarks.contains(folder.path(u"log.ldx serves both logs and is left as it is"_s)));
        QFile kept(folder.path(u"log.ldx"_s));
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), sidecar);
        QCOMPARE(refusal("bare", "bare.csv", false), QString());
        QCOMPARE(readSidecar(folder.path(u"bare.ldx"_s)).sessionWord.value_or(QString()), u"Race"_s);
        // Of two sessions that of the sidecar counts, and of a broken sidecar what comes before the error.
        folder.write(u"bare.ldx"_s, "<x><i Id='Event' Value='Test'/><i Id='A' Value='1' Unit=''/><i Id='B'>");
        QCOMPARE(refusal("bare", "third.csv", false), QString());
        QVERIFY(summary.remarks.first().startsWith(u"the sidecar is broken in line 1 ("_s));
        const Sidecar third = readSidecar(folder.path(u"third.ldx"_s));
        QCOMPARE(third.sessionWord.value_or(QString()), u"Test"_s);
        QVERIFY(third.items.size() == 2 && third.items[0].unit && !third.items[1].unit);
    }
};

QTEST_GUILESS_MAIN(tst_Rewrite)
#include "tst_rewrite.moc"
