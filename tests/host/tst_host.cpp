// Drives orva-host as people and scripts do: arguments in; standard output, standard error and the exit status out.

#include "ld/ldwriter.h"
#include "testing.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QStringConverter>

#include <sys/stat.h>

using namespace Testing;

namespace {

struct Result
{
    int status = -1; // -1: ended by a signal, or did not end
    QByteArray out;
    QByteArray err;
};

Result finish(QProcess &process)
{
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Result runHost(const QStringList &arguments, const QString &locale = u"C"_s, const QString &outFile = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, locale);
    process.setProcessEnvironment(environment);
    if (!outFile.isEmpty())
        process.setStandardOutputFile(outFile);
    process.start(QStringLiteral(ORVA_HOST), arguments);
    return finish(process);
}

// Three laps of three rows at decimal commas, as the exporting tools write them; the out lap is the fastest.
QByteArray exportText()
{
    QByteArray text(
        "\"Format\",\"CSV\"\r\n\"Venue\",\"Zürich\"\r\n\"Vehicle\",\"GT\"\r\n\"Driver\",\"A. B.\"\r\n\r\n\r\n"
        "\"Lap Dist Pct\",\"Lap Number\",\"Lap Last Lap Time\",\"Speed\"\r\n\"%\",\"\",\"s\",\"km/h\"\r\n"
        "\r\n\r\n");
    const char *const lastTimes[]{"0", "59,25", "92,5"};
    for (int lap = 0; lap < 3; ++lap) {
        for (int row = 0; row < 3; ++row)
            text += u"\"%1\",\"%2\",\"%3\",\"%4,25\"\r\n"_s.arg(row * 49 + 1)
                        .arg(lap)
                        .arg(QLatin1String(lastTimes[lap]))
                        .arg(lap * 10 + row)
                        .toUtf8();
    }
    return text;
}

// A log of two whole laps and the first sample of a third: 60 rows per second, the counter and the timers as they run.
QByteArray binaryLog()
{
    using LdWriter::channel;
    LdHeadBlock head;
    LdWriter::setText(head.venueText, "Zürich");
    LdWriter::setText(head.sessionText, "Race");
    return LdWriter::log({channel("Lap", {1, 1, 1, 2, 2, 2, 3, 3}),
                          channel("lapdistpct", {1, 50, 99, 1, 50, 99, 1, 2}, "%"),
                          channel("lapcurrentlaptime", {1, 45, 90, 1, 46, 92, 1, 2}),
                          channel("laplastlaptime", {0, 0, 0, 905, 905, 905, 925, 925}, "s", 60, 1),
                          channel("speed", {0, 1, 2, 10, 11, 12, 20, 21}, "km/h")},
                         head);
}

} // namespace

class TestHost : public QObject
{
    Q_OBJECT

    // The words of a command, where "@" stands for the folder of the test's files, and "+" for the odd plug-in.
    QStringList withFiles(const QByteArray &command) const
    {
        QStringList arguments;
        for (const QString &word : QString::fromUtf8(command).split(u' ', Qt::SkipEmptyParts))
            arguments.append(word == u'+' ? QStringLiteral("--plugin=" ODD_PLUGIN)
                                          : QString(word).replace(u'@', files.path(QString()) + u'/'));
        return arguments;
    }

    Files files;

private Q_SLOTS:
    void initTestCase()
    {
        const QByteArray text = exportText();
        files.write(u"log.csv"_s, text);
        files.write(u"log.ldx"_s, "<x><i Id='Event' Value='Race'/><i Id='CarSetup_Wing' Value='3.5' Unit='deg'/>"
                                  "<i Id='Tyre' Value='soft'/></x>");
        files.write(u"header.csv"_s, text.left(text.indexOf("\"1\"")));
        files.write(u"empty.csv"_s, {});
        files.write(u"image.csv"_s, QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x10\0\0\0\x10\x08\2\0\0\0", 29));
        files.write(u"nothing"_s, "x");
        files.write(u"thrown"_s, "x");
        files.write(u"binary.csv"_s, binaryLog());
        files.write(u"binary.ldx"_s, "<x><i Id='Wing' Value='P4'/></x>");
        QCOMPARE(mkfifo(QFile::encodeName(files.path(u"pipe"_s)).constData(), 0600), 0);
    }

    void failures_data()
    {
        const Table<QByteArray, int, QByteArray> row("command", "status", "fragment");
        row("no log", "", 2, "no log given");
        row("two logs", "a b", 2, "2 logs given, expected one");
        row("unknown option", "--frob @log.csv", 2, "Unknown option 'frob'");
        row("option without value", "@log.csv --lap", 2, "Missing value after '--lap'");
        row("lap is no number", "--lap 1.5 @log.csv", 2, "--lap is \"1.5\"");
        row("lap is negative", "--lap=-1 @log.csv", 2, "--lap is \"-1\"");
        row("two views", "--channels --setup @log.csv", 2, "do not go together");
        row("open quote", "--values speed,\"rpm @log.csv", 2, "--values is 'speed,\"rpm', expected a double quote");
        row("missing file", "@gone.csv", 1, "gone.csv: no such file, expected a log file");
        row("directory", "@", 1, ": a directory, expected a log file");
        row("pipe", "@pipe", 1, "pipe: no regular file");
        row("device", "/dev/zero", 1, "/dev/zero: no regular file");
        row("read error", "/proc/self/mem", 1, "cannot be read");
        row("empty file", "@empty.csv", 1, "empty.csv: empty");
        row("neither format", "@image.csv", 1, "neither a comma-separated text export nor a binary .ld log");
        row("no rows", "@header.csv", 1, "header.csv: holds no data rows");
        row("plug-in missing", "--plugin @gone.so @log.csv", 1, "gone.so: no such file");
        row("plug-in is a directory", "--plugin @ @log.csv", 1, "no regular file, expected an import plug-in");
        row("plug-in is text", "--plugin @log.csv @log.csv", 1, "no plug-in, expected one of interface");
        row("plug-in is a program", "--plugin " ORVA_HOST " @log.csv", 1, "no plug-in, expected one of interface");
        row("other interface", "--plugin " OTHER_PLUGIN " @log.csv", 1,
            "interface \"kovdata.PluginInterfaceImport/0.1\", expected \"kovdata.PluginInterfaceImport/0.2\"");
        row("lying plug-in", "--plugin " LYING_PLUGIN " @log.csv", 1, "does not offer the interface");
        row("plug-in finds nothing", "--plugin " ODD_PLUGIN " @nothing", 1, "\"odd\" finds no laps");
        row("plug-in throws", "+ @thrown", 1, "the import ended with an exception");
        row("unknown lap", "--lap 3 @log.csv", 1, "no lap with index 3, expected 0 to 2");
        row("unknown channel", "--values speed,rpm @log.csv", 1, "no channel \"rpm\" in lap 1");
        row("channel in another case", "--values Speed @log.csv", 1, "did you mean \"speed\"?");
        row("unknown channel for JSON", "--json --values rpm @log.csv", 1, "no channel \"rpm\" in any lap");
    }
    void failures()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, fragment);
        const Result result = runHost(withFiles(command));
        QTEST(result.status, "status");
        QCOMPARE(result.out, QByteArray());
        QCOMPARE(result.err.count('\n'), 1);
        QVERIFY2(result.err.startsWith("orva-host: ") && result.err.endsWith('\n'), result.err.constData());
        QVERIFY2(result.err.contains(fragment), result.err.constData());
    }

    void formats_data()
    {
        using LdWriter::channel;
        const Table<QByteArray, QByteArray> row("content", "error"); // none: it gives laps
        const QByteArray text = exportText();
        const QString decoded = QString::fromUtf8(text);
        const auto encoded = [&decoded](QStringConverter::Encoding encoding) -> QByteArray {
            return QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(decoded);
        };
        row("bare columns", "\nspeed\nkm/h\n\n1\n2\n", "");
        row("UTF-8 mark", encoded(QStringConverter::Utf8), "");
        row("UTF-16", encoded(QStringConverter::Utf16LE), "");
        row("UTF-16, big-endian", encoded(QStringConverter::Utf16BE), "");
        row("UTF-32", encoded(QStringConverter::Utf32LE), "");
        row("UTF-32, big-endian", encoded(QStringConverter::Utf32BE), "");
        row("Latin-1", decoded.toLatin1(), "");
        row("NULs of a torn write", text + QByteArray(5, '\0'), "");
        LdHeadBlock named;
        LdWriter::setText(named.venueText, "Zürich");
        LdHeadBlock marked;
        marked.reserved0[0] = 64;
        const auto lap = channel("lap", {1, 1, 1, 1, 1});
        const auto distance = channel("lapdistpct", {1, 1, 1, 1, 1});
        auto otherKind = lap;
        otherKind.header.typeCode = 7;
        auto huge = channel("lap", {});
        huge.header.sampleCount = 0xFFFFFFFF;
        row("log", binaryLog(), "");
        row("head alone", LdWriter::log({}, named), "without laps, it holds no channels\n");
        row("cut-off head", LdWriter::log({}, marked).left(64), "it holds no channels\n");
        row("other kind", LdWriter::log({otherKind}), "no channels of a readable kind");
        row("no lap", LdWriter::log({distance}), "no \"lap\" channel");
        row("no distance", LdWriter::log({lap}), "no \"lapdistpct\" channel");
        row("few samples", LdWriter::log({lap, channel("lapdistpct", {1, 1, 1, 1})}),
            "\"lapdistpct\" channel holds too few samples (4 at 60 per second");
        row("absurd claim", LdWriter::log({huge, distance}), "claim more samples");
        row("NULs only", QByteArray(4000, '\0'), "neither");
        row("short NULs", QByteArray(7, '\0'), "neither");
        row("program", "\177ELF\2\1\1" + QByteArray(40, '\0'), "neither");
    }
    void formats()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, error);
        const Result result = runHost({files.write(u"any.ld"_s, content)});
        QCOMPARE(result.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(result.err.contains(error), result.err.constData());
    }

    void views_data()
    {
        // A transcript: commands behind "$ ", each with what it prints.
        const Table<QByteArray, QByteArray> row("command", "expected");
        QFile transcript(QStringLiteral(HOST_VIEWS));
        QVERIFY(transcript.open(QIODevice::ReadOnly));
        for (const QString &entry : QString::fromUtf8("\n" + transcript.readAll()).split(u"\n$ "_s).sliced(1)) {
            const QByteArray command = entry.section(u'\n', 0, 0).toUtf8();
            const QByteArray printed = entry.section(u'\n', 1).toUtf8();
            row(command, command, printed.isEmpty() || printed.endsWith('\n') ? printed : printed + '\n');
        }
    }
    void views()
    {
        QFETCH(QByteArray, command);
        files.write(u"nosetup.csv"_s, exportText());
        // The locale stands for one with a decimal comma; where it is not installed the C locale must do as well.
        const Result result = runHost(withFiles("--quiet " + command), u"de_DE.UTF-8"_s);
        QCOMPARE(result.err, QByteArray());
        QTEST(result.out, "expected");
        QCOMPARE(result.status, 0);
    }

    void messagesGoToStandardError()
    {
        const QByteArray log = files.path(u"log.csv"_s).toUtf8();
        const QByteArray plugin = "[Motec's CSV import plugin plugin] ";
        QCOMPARE(runHost(withFiles("--plugin=" ORVA_PLUGIN " @log.csv")).err,
                 plugin + "Importing file " + log + " ...\n" + plugin + "Using format Comma separated text (*.csv)\n");
        QCOMPARE(runHost(withFiles("+ @log.csv")).err, "[odd plugin] two\uFFFDlines\n"_ba);
        QVERIFY(runHost(withFiles("@log.csv --values=speed")).err.endsWith("index 1; --lap picks another\n"));
        QVERIFY(runHost(withFiles("--help")).out.startsWith("Usage: "));
    }

    void channelsLeftOut()
    {
        using LdWriter::channel;
        std::vector<LdWriter::Channel> channels{channel("lap", {1, 1, 1, 1, 1}),
                                                channel("lapdistpct", {1, 2, 3, 4, 5})};
        for (const char *name : {"%1", "b", "c", "b", "d", "e", "f", "g"}) {
            channels.push_back(channel(name, {}));
            channels.back().header.sampleCount = 0xFFFFFFFF;
        }
        channels.push_back(channel("c", {1, 2, 3})); // a second record of the name, with samples that fit
        channels.push_back(channel("none", {}));
        const QString path = files.write(u"absurd.ld"_s, LdWriter::log(channels));
        QCOMPARE(runHost({path}).err,
                 path.toUtf8() + ": channels left out, as more samples are claimed than a log of " +
                     QByteArray::number(QFileInfo(path).size()) +
                     " bytes is believed to hold: \"%1\", \"b\", \"d\", \"e\", \"f\" and 1 more\n");

        // The most that an honest log asks for: all channels at one per second, short laps, and one lap of each of the
        // 60 samples on the counter's way from one number to the next.
        constexpr qint16 seconds = 2700;
        constexpr qint16 lapSeconds = 45;
        std::vector<qint16> lap;
        std::vector<qint16> distance;
        for (qint16 i = 0; i < seconds; ++i) {
            lap.push_back(static_cast<qint16>(i / lapSeconds));
            distance.push_back(static_cast<qint16>(i % lapSeconds * 100 / lapSeconds));
        }
        channels = {channel("lap", lap, {}, 1), channel("lapdistpct", distance, "%", 1)};
        while (channels.size() < 200)
            channels.push_back(channel("c" + QByteArray::number(channels.size()), lap, {}, 1));
        const Result slow = runHost({u"--channels"_s, files.write(u"slow.ld"_s, LdWriter::log(channels))});
        QCOMPARE(slow.err, QByteArray());
        QVERIFY2(slow.out.contains("): 200 channels\n"), slow.out.constData());
    }

    void json_data()
    {
        const Table<QByteArray, QList<int>, bool> row("command", "laps", "withValues");
        row("all laps", "--json @log.csv", {0, 1, 2}, false);
        row("all else asked for", "--json --channels --setup --values speed @log.csv", {0, 1, 2}, true);
        row("one lap", "--json --lap 1 --values speed @log.csv", {1}, true);
    }
    void json()
    {
        QFETCH(QByteArray, command);
        QFETCH(QList<int>, laps);
        QFETCH(bool, withValues);
        QJsonParseError error{};
        const QJsonObject log = QJsonDocument::fromJson(runHost(withFiles(command)).out, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(log[u"venueName"].toString(), u"Zürich"_s);
        QCOMPARE(log[u"sessionName"].toString(), u"Race"_s);
        QCOMPARE(log[u"bestLap"].toInt(-1), 1);
        QCOMPARE(log[u"lapCount"].toInt(), 3);
        const QJsonArray shown = log[u"laps"].toArray();
        QCOMPARE(shown.size(), laps.size());
        const QList<QJsonValue> times{59250, 92500, QJsonValue::Null};
        for (qsizetype i = 0; i < laps.size(); ++i) {
            const QJsonObject lap = shown[i].toObject();
            QCOMPARE(lap[u"index"].toInt(-1), laps[i]);
            QCOMPARE(lap[u"lapNumber"].toInt(-1), laps[i]);
            QCOMPARE(lap[u"best"].toBool(), laps[i] == 1);
            QCOMPARE(lap[u"completed"].toBool(), laps[i] != 2);
            QCOMPARE(lap[u"lapTimeMs"], times[laps[i]]);
            QCOMPARE(lap[u"carInfo"].toObject()[u"sourceName"].toString(), u"MoTeC"_s);
            QCOMPARE(lap[u"dynamicData"].toObject()[u"Wing"].toObject(),
                     (QJsonObject{{u"value"_s, 3.5}, {u"unit"_s, u"deg"_s}}));
            QVERIFY(!QUuid(lap[u"lapId"].toString()).isNull());
            const QJsonArray channels = lap[u"channels"].toArray();
            QCOMPARE(channels.size(), 4);
            QVERIFY(!channels[0].toObject().contains(u"values"));
            const QJsonObject speed = channels[3].toObject();
            QCOMPARE(speed[u"unit"].toString(), u"km/h"_s);
            QCOMPARE(speed[u"maximum"].toDouble(), laps[i] * 10 + 2.25);
            QCOMPARE(speed.contains(u"values"), withValues);
            if (withValues)
                QCOMPARE(speed[u"values"].toArray()[2].toDouble(), laps[i] * 10 + 2.25);
        }
    }

    void jsonOfOddValues()
    {
        const Result result = runHost(withFiles("+ --json --lap 0 --values \"a,\"\"b\"\"\",none,東 @log.csv"));
        QVERIFY(!QJsonDocument::fromJson(result.out).isNull());
        for (const char *expected :
             {"[-0, 0.1, null, null, null, 1e-07]", "[null, 0.3333333333333333, 123456789, null, null, null]",
              "[null, null, null, null, null, null]", "\"venueName\": \"\\u001B[2JN\\nring\"",
              "\"name\": \"a,\\\"b\\\"\"", "\"minimum\": null"})
            QVERIFY2(result.out.contains(expected), expected);
        const QByteArray dense = result.out.simplified().replace(' ', "");
        for (const char *expected :
             {R"("char":{"value":97,)", R"("signedchar":{"value":-3,)", R"("uchar":{"value":200,)",
              R"("short":{"value":-4,)", R"("ushort":{"value":65535,)", R"("int":{"value":-5,)",
              R"("uint":{"value":4294967295,)", R"("long":{"value":-9223372036854775808,)",
              R"("ulong":{"value":9007199254740993,)", R"("qlonglong":{"value":-9223372036854775808,)",
              R"("qulonglong":{"value":18446744073709551615,)", R"("bool":{"value":true,)",
              R"("float":{"value":0.10000000149011612,)", R"("double":{"value":null,)",
              R"("std::nullptr_t":{"value":null,)"})
            QVERIFY2(dense.contains(expected), expected);
        QVERIFY2(!result.out.contains("[7]"), "a recorded channel hides the calculated one of its name");
    }

    void outputFailures()
    {
        for (const char *command : {"-q @log.csv", "-q --json --values speed @log.csv", "--help"}) {
            const QStringList arguments = withFiles(command);
            const Result full = runHost(arguments, u"C"_s, u"/dev/full"_s);
            QCOMPARE(full.status, 1);
            QCOMPARE(full.err, "orva-host: standard output: cannot be written: No space left on device\n"_ba);

            QProcess shell; // a pipe whose reader has gone before the first write
            const QString host = QStringLiteral(ORVA_HOST " ") + arguments.join(u' ');
            const QString script = u"{ read go < '%2'; %1; echo $? >&2; } | { exec <&-; echo > '%2'; }"_s;
            shell.start(u"sh"_s, {u"-c"_s, script.arg(host, files.path(u"pipe"_s))});
            QCOMPARE(finish(shell).err, "orva-host: standard output: cannot be written: Broken pipe\n1\n"_ba);
            shell.start(u"sh"_s, {u"-c"_s, u"exec %1 >&-"_s.arg(host)});
            QCOMPARE(finish(shell).err, "orva-host: standard output: cannot be written: Bad file descriptor\n"_ba);
        }
    }
};

QTEST_GUILESS_MAIN(TestHost)
#include "tst_host.moc"
