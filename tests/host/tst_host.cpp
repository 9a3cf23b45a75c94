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

Result runHost(const QStringList &arguments, const QString &locale = QStringLiteral("C"), const QString &outFile = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), locale);
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
            text += QStringLiteral("\"%1\",\"%2\",\"%3\",\"%4,25\"\r\n")
                        .arg(row * 49 + 1)
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

const QString odd = QStringLiteral("--plugin=" ODD_PLUGIN);

} // namespace

class TestHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void failures_data();
    void failures();
    void formats_data();
    void formats();
    void views_data();
    void views();
    void messagesGoToStandardError();
    void channelsLeftOut();
    void json_data();
    void json();
    void jsonOfOddValues();
    void outputFailures_data();
    void outputFailures();

private:
    QStringList withFiles(const QString &command) const
    {
        QStringList arguments;
        for (QString argument : command.split(u' ', Qt::SkipEmptyParts))
            arguments.append(argument.replace(u'@', files.path(QString()) + u'/'));
        return arguments;
    }

    Testing::Files files;
};

void TestHost::initTestCase()
{
    const QByteArray text = exportText();
    files.write(QStringLiteral("log.csv"), text);
    files.write(QStringLiteral("log.ldx"),
                "<x><i Id='Event' Value='Race'/><i Id='CarSetup_Wing' Value='3.5' Unit='deg'/>"
                "<i Id='Tyre' Value='soft'/></x>");
    files.write(QStringLiteral("header.csv"), text.left(text.indexOf("\"1\"")));
    files.write(QStringLiteral("empty.csv"), {});
    files.write(QStringLiteral("image.csv"),
                QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x10\0\0\0\x10\x08\2\0\0\0", 29));
    files.write(QStringLiteral("nothing"), "x");
    files.write(QStringLiteral("thrown"), "x");
    files.write(QStringLiteral("binary.csv"), binaryLog());
    files.write(QStringLiteral("binary.ldx"), "<x><i Id='Wing' Value='P4'/></x>");
    QCOMPARE(mkfifo(QFile::encodeName(files.path(QStringLiteral("pipe"))).constData(), 0600), 0);
}

void TestHost::failures_data()
{
    QTest::addColumn<QString>("command"); // "@" stands for the folder of the test's files
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("fragment");
    const auto row = [](const char *name, const char *command, int status, const char *fragment) {
        QTest::newRow(name) << QString::fromUtf8(command) << status << QString::fromUtf8(fragment);
    };
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
    row("plug-in throws", "--plugin " ODD_PLUGIN " @thrown", 1, "the import ended with an exception");
    row("unknown lap", "--lap 3 @log.csv", 1, "no lap with index 3, expected 0 to 2");
    row("unknown channel", "--values speed,rpm @log.csv", 1, "no channel \"rpm\" in lap 1");
    row("channel in another case", "--values Speed @log.csv", 1, "did you mean \"speed\"?");
    row("unknown channel for JSON", "--json --values rpm @log.csv", 1, "no channel \"rpm\" in any lap");
}

void TestHost::failures()
{
    QFETCH(QString, command);
    QFETCH(int, status);
    QFETCH(QString, fragment);
    const Result result = runHost(withFiles(command));
    QCOMPARE(result.status, status);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err.count('\n'), 1);
    QVERIFY2(result.err.startsWith("orva-host: ") && result.err.endsWith('\n'), result.err.constData());
    QVERIFY2(result.err.contains(fragment.toUtf8()), result.err.constData());
}

void TestHost::formats_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("error"); // none: it gives laps
    const QByteArray text = exportText();
    const QString decoded = QString::fromUtf8(text);
    const auto encoded = [&decoded](QStringConverter::Encoding encoding) -> QByteArray {
        return QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(decoded);
    };
    QTest::newRow("bare columns") << QByteArray("\nspeed\nkm/h\n\n1\n2\n") << QByteArray();
    QTest::newRow("UTF-8 mark") << encoded(QStringConverter::Utf8) << QByteArray();
    QTest::newRow("UTF-16") << encoded(QStringConverter::Utf16LE) << QByteArray();
    QTest::newRow("UTF-16, big-endian") << encoded(QStringConverter::Utf16BE) << QByteArray();
    QTest::newRow("UTF-32") << encoded(QStringConverter::Utf32LE) << QByteArray();
    QTest::newRow("UTF-32, big-endian") << encoded(QStringConverter::Utf32BE) << QByteArray();
    QTest::newRow("Latin-1") << decoded.toLatin1() << QByteArray();
    QTest::newRow("NULs of a torn write") << text + QByteArray(5, '\0') << QByteArray();
    using LdWriter::channel;
    LdHeadBlock named;
    LdWriter::setText(named.venueText, "Zürich");
    LdHeadBlock marked;
    marked.reserved0[0] = 64;
    const std::vector<qint16> few(4, 1);
    const std::vector<qint16> enough(5, 1);
    auto otherKind = channel("lap", enough);
    otherKind.header.typeCode = 7;
    auto huge = channel("lap", {});
    huge.header.sampleCount = 0xFFFFFFFF;
    QTest::newRow("log") << binaryLog() << QByteArray();
    QTest::newRow("head alone") << LdWriter::log({}, named) << QByteArray("without laps, it holds no channels\n");
    QTest::newRow("cut-off head") << LdWriter::log({}, marked).left(64) << QByteArray("it holds no channels\n");
    QTest::newRow("other kind") << LdWriter::log({otherKind}) << QByteArray("no channels of a readable kind");
    QTest::newRow("no lap") << LdWriter::log({channel("lapdistpct", enough)}) << QByteArray("no \"lap\" channel");
    QTest::newRow("no distance") << LdWriter::log({channel("Lap", enough)}) << QByteArray("no \"lapdistpct\" channel");
    QTest::newRow("few samples") << LdWriter::log({channel("lap", enough), channel("lapdistpct", few)})
                                 << QByteArray("\"lapdistpct\" channel holds too few samples (4 at 60 per second");
    QTest::newRow("absurd claim") << LdWriter::log({huge, channel("lapdistpct", enough)})
                                  << QByteArray("claim more samples");
    QTest::newRow("NULs only") << QByteArray(4000, '\0') << QByteArray("neither");
    QTest::newRow("short NULs") << QByteArray(7, '\0') << QByteArray("neither");
    QTest::newRow("program") << QByteArray("\x7f"
                                           "ELF\2\1\1",
                                           7) +
                                    QByteArray(40, '\0')
                             << QByteArray("neither");
}

void TestHost::formats()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, error);
    const Result result = runHost({files.write(QStringLiteral("any.ld"), content)});
    QCOMPARE(result.status, error.isEmpty() ? 0 : 1);
    QVERIFY2(result.err.contains(error), result.err.constData());
}

void TestHost::views_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &command, const char *expected) {
        QTest::newRow(name) << command << QString::fromUtf8(expected);
    };
    row("laps", QStringLiteral("@log.csv"),
        "Venue     Zürich\nVehicle   GT\nDriver    A. B.\nSession   Race\nSource    MoTeC\nChannels  4\n\n"
        "Index  Lap  Kind         Time  Samples  Completed\n"
        "    0    0  out lap  0:59.250        3  yes\n"
        "    1    1  lap      1:32.500        3  yes        best\n"
        "    2    2  lap             -        3  no\n");
    row("odd laps", odd + QStringLiteral(" @log.csv --lap 6"),
        "Venue     \uFFFD[2JN\uFFFDring\nVehicle   -\nDriver    -\nSession   Unknown session\nSource    -\nChannels  "
        "4\n\n"
        "Index  Lap  Kind  Time  Samples  Completed\n    6   46  -        -        6  yes\n");
    row("laps of a binary log", QStringLiteral("@binary.csv"),
        "Venue     Zürich\nVehicle   -\nDriver    -\nSession   Race\nSource    -\nChannels  5\n\n"
        "Index  Lap  Kind         Time  Samples  Completed\n"
        "    0    1  out lap  1:30.500        3  yes\n"
        "    1    2  lap      1:32.500        3  yes        best\n"
        "    2    3  lap             -        1  no\n");
    row("values of a binary log", QStringLiteral("--values speed,lapdistpct --lap 1 @binary.csv"),
        "speed,lapdistpct\n10,0.01\n11,0.5\n12,0.99\n");
    row("setup of a binary log", QStringLiteral("--setup @binary.csv"), "Name  Value  Unit\nWing  P4\n");
    row("channels of the best lap", QStringLiteral("--channels @log.csv"),
        "Lap with index 1 (lap, number 1, time 1:32.500, best): 4 channels\n\n"
        "Name            Unit  Samples  Valid  Minimum  Maximum\n"
        "lapdistpct      pu          3      3     0.01     0.99\n"
        "laplastlaptime  s           3      3    59.25    59.25\n"
        "lapnumber       -           3      3        1        1\n"
        "speed           km/h        3      3    10.25    12.25\n");
    row("odd channels", odd + QStringLiteral(" --channels @log.csv --lap 0"),
        "Lap with index 0 (out lap, number 40, time 1:20.000): 5 channels\n\n"
        "Name   Unit  Samples  Valid  Minimum      Maximum\n"
        "a,\"b\"  -           6      3        0          0.1\n"
        "none   -           6      0        -            -\n"
        "東     -           6      3     -inf  1.23457e+08\n"
        "none   -           1      1        7            7  calculated\n"
        "sum    -           1      1        8            8  calculated\n");
    row("values", QStringLiteral("--values=speed,lapdistpct --lap=2 @log.csv"),
        "speed,lapdistpct\n20.25,0.01\n21.25,0.5\n22.25,0.99\n");
    row("odd values", odd + QStringLiteral(" --values \"a,\"\"b\"\"\",東 --values sum @log.csv"),
        "\"a,\"\"b\"\"\",東,sum\n-0,-inf,8\n0.1,0.3333333333333333,\n,123456789,\n,,\n,,\n1e-07,,\n");
    row("setup", QStringLiteral("--setup @log.csv"), "Name  Value  Unit\nTyre  soft\nWing  3.5    deg\n");
    row("no setup", QStringLiteral("--setup @nosetup.csv"), "");
    row("version", QStringLiteral("--version"), "orva-host 0.1.0\n");
}

void TestHost::views()
{
    QFETCH(QString, command);
    QFETCH(QString, expected);
    files.write(QStringLiteral("nosetup.csv"), exportText());
    // The locale stands for one with a decimal comma; where it is not installed the C locale must do as well.
    const Result result = runHost(withFiles(QStringLiteral("--quiet ") + command), QStringLiteral("de_DE.UTF-8"));
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(QString::fromUtf8(result.out), expected);
    QCOMPARE(result.status, 0);
}

void TestHost::messagesGoToStandardError()
{
    const QString log = files.path(QStringLiteral("log.csv"));
    QCOMPARE(QString::fromUtf8(runHost({log, QStringLiteral("--plugin=" ORVA_PLUGIN)}).err),
             QStringLiteral("[Motec's CSV import plugin plugin] Importing file %1 ...\n"
                            "[Motec's CSV import plugin plugin] Using format Comma separated text (*.csv)\n")
                 .arg(log));
    QCOMPARE(runHost({odd, log}).err, QByteArray("[odd plugin] two\uFFFDlines\n"));
    QVERIFY(runHost({log, QStringLiteral("--values=speed")}).err.endsWith("index 1; --lap picks another\n"));
    QVERIFY(runHost({QStringLiteral("--help")}).out.startsWith("Usage: "));
}

void TestHost::channelsLeftOut()
{
    using LdWriter::channel;
    std::vector<LdWriter::Channel> channels{channel("lap", {1, 1, 1, 1, 1}), channel("lapdistpct", {1, 2, 3, 4, 5})};
    for (const char *name : {"%1", "b", "c", "b", "d", "e", "f", "g"}) {
        channels.push_back(channel(name, {}));
        channels.back().header.sampleCount = 0xFFFFFFFF;
    }
    channels.push_back(channel("c", {1, 2, 3})); // a second record of the name, with samples that fit
    channels.push_back(channel("none", {}));
    const QString path = files.write(QStringLiteral("absurd.ld"), LdWriter::log(channels));
    const Result absurd = runHost({path});
    QCOMPARE(absurd.err, path.toUtf8() + ": channels left out, as more samples are claimed than a log of " +
                             QByteArray::number(QFileInfo(path).size()) +
                             " bytes is believed to hold: \"%1\", \"b\", \"d\", \"e\", \"f\" and 1 more\n");

    // The most that an honest log asks for: all channels at one per second, short laps, and one lap of each of the 60
    // samples on the counter's way from one number to the next.
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
    const Result slow =
        runHost({QStringLiteral("--channels"), files.write(QStringLiteral("slow.ld"), LdWriter::log(channels))});
    QCOMPARE(slow.err, QByteArray());
    QVERIFY2(slow.out.contains("): 200 channels\n"), slow.out.constData());
}

void TestHost::json_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QList<int>>("laps");
    QTest::addColumn<bool>("withValues");
    QTest::newRow("all laps") << QStringLiteral("--json @log.csv") << QList<int>{0, 1, 2} << false;
    QTest::newRow("all else asked for") << QStringLiteral("--json --channels --setup --values speed @log.csv")
                                        << QList<int>{0, 1, 2} << true;
    QTest::newRow("one lap") << QStringLiteral("--json --lap 1 --values speed @log.csv") << QList<int>{1} << true;
}

void TestHost::json()
{
    QFETCH(QString, command);
    QFETCH(QList<int>, laps);
    QFETCH(bool, withValues);
    QJsonParseError error{};
    const QJsonObject log = QJsonDocument::fromJson(runHost(withFiles(command)).out, &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(log[u"venueName"].toString(), QStringLiteral("Zürich"));
    QCOMPARE(log[u"sessionName"].toString(), QStringLiteral("Race"));
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
        QCOMPARE(lap[u"carInfo"].toObject()[u"sourceName"].toString(), QStringLiteral("MoTeC"));
        QCOMPARE(lap[u"dynamicData"].toObject()[u"Wing"].toObject(),
                 (QJsonObject{{QStringLiteral("value"), 3.5}, {QStringLiteral("unit"), QStringLiteral("deg")}}));
        QVERIFY(!QUuid(lap[u"lapId"].toString()).isNull());
        const QJsonArray channels = lap[u"channels"].toArray();
        QCOMPARE(channels.size(), 4);
        QVERIFY(!channels[0].toObject().contains(u"values"));
        const QJsonObject speed = channels[3].toObject();
        QCOMPARE(speed[u"unit"].toString(), QStringLiteral("km/h"));
        QCOMPARE(speed[u"maximum"].toDouble(), laps[i] * 10 + 2.25);
        QCOMPARE(speed.contains(u"values"), withValues);
        if (withValues)
            QCOMPARE(speed[u"values"].toArray()[2].toDouble(), laps[i] * 10 + 2.25);
    }
}

void TestHost::jsonOfOddValues()
{
    const Result result =
        runHost(withFiles(odd + QStringLiteral(" --json --lap 0 --values \"a,\"\"b\"\"\",none,東 @log.csv")));
    QVERIFY(!QJsonDocument::fromJson(result.out).isNull());
    for (const char *expected :
         {"[-0, 0.1, null, null, null, 1e-07]", "[null, 0.3333333333333333, 123456789, null, null, null]",
          "[null, null, null, null, null, null]", R"("venueName": "\u001b[2JN\u000aring")", R"("name": "a,\"b\"")",
          "\"minimum\": null"})
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

void TestHost::outputFailures_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("laps") << QStringLiteral("-q @log.csv");
    QTest::newRow("JSON") << QStringLiteral("-q --json --values speed @log.csv");
    QTest::newRow("help") << QStringLiteral("--help");
}

void TestHost::outputFailures()
{
    QFETCH(QString, command);
    const Result full = runHost(withFiles(command), QStringLiteral("C"), QStringLiteral("/dev/full"));
    QCOMPARE(full.status, 1);
    QCOMPARE(full.err, QByteArray("orva-host: standard output: cannot be written: No space left on device\n"));

    QProcess shell; // a pipe whose reader has gone before the first write
    const QString host = QStringLiteral(ORVA_HOST " ") + withFiles(command).join(u' ');
    shell.start(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("{ read go < '%2'; %1; echo $? >&2; } | { exec <&-; echo > '%2'; }")
                                   .arg(host, files.path(QStringLiteral("pipe")))});
    QCOMPARE(finish(shell).err, QByteArray("orva-host: standard output: cannot be written: Broken pipe\n1\n"));
    shell.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("exec %1 >&-").arg(host)});
    QCOMPARE(finish(shell).err, QByteArray("orva-host: standard output: cannot be written: Bad file descriptor\n"));
}

QTEST_GUILESS_MAIN(TestHost)
#include "tst_host.moc"
