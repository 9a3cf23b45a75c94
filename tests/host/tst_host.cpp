// Drives orva-host as people and scripts do: arguments in; standard output, standard error and the exit status out.

#include "ld/ldwriter.h"
#include "testing.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QStringConverter>
#include <QtCore/QtEndian>

#include <sys/stat.h>
#include <unistd.h>

using namespace Testing;

namespace {

struct Result
{
    int status = -1; // -1: ended by a signal, or did not end
    QByteArray out;
    QByteArray err;
};

Result run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

// As the exporting tools write it: three laps of three rows at decimal commas. The out lap is the fastest.
const QByteArray exportText = R"("Venue","Zürich"
"Vehicle","GT"
"Driver","A. B."


"Lap Dist Pct","Lap Number","Lap Last Lap Time","Speed"
"%","","s","km/h"


"1","0","0","0,25"
"50","0","0","1,25"
"99","0","0","2,25"
"1","1","59,25","10,25"
"50","1","59,25","11,25"
"99","1","59,25","12,25"
"1","2","92,5","20,25"
"50","2","92,5","21,25"
"99","2","92,5","22,25"
)";

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

    // Runs a command, where "@" means the folder of the test's files, and "+" the odd plug-in.
    Result runHost(const QByteArray &command) const
    {
        return run(QStringLiteral(ORVA_HOST), withFiles(command).split(u' ', Qt::SkipEmptyParts));
    }
    QString withFiles(const QByteArray &command) const
    {
        return QString::fromUtf8(command)
            .replace(u"+ "_s, QStringLiteral("--plugin=" ODD_PLUGIN " "))
            .replace(u'@', files.path(QString()) + u'/');
    }

    Files files;

private Q_SLOTS:
    void initTestCase()
    {
        // Numbers in a locale with a decimal comma, where it is installed, and texts in one that is not of UTF-8.
        for (const char *variable : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LANGUAGE"})
            qunsetenv(variable);
        qputenv("LANG", "C");
        qputenv("LC_NUMERIC", "de_DE.UTF-8");
        files.write(u"log.csv"_s, exportText);
        files.write(u"log.ldx"_s, "<x><i Id='Event' Value='Race'/><i Id='CarSetup_Wing' Value='3.5' Unit='deg'/>"
                                  "<i Id='Tyre' Value='soft'/></x>");
        files.write(u"nosetup.csv"_s, exportText);
        files.write(u"header.csv"_s, exportText.first(exportText.indexOf("\"1\"")));
        files.write(u"empty.csv"_s, {});
        files.write(u"nothing"_s, "x");
        files.write(u"thrown"_s, "x");
        files.write(u"binary.csv"_s, binaryLog());
        using LdWriter::channel;
        files.write(u"rates"_s, LdWriter::log({channel("Fast", {1, 2, 3, 4}, "m", 3), channel("Slow", {10, 20}, {}, 2),
                                               channel("Whole", {5}, {}, 0), channel("fast", {7}, {}, 4)}));
        files.write(u"rates.ldx"_s, "<x><i Id='Wing' Value='P4'/></x>");
        // Logs with one of each thing amiss, and with several.
        files.write(u"one.csv"_s,
                    "Sample Rate,2\nBeacon Markers,0.7\n\nTime,Lap Dist Pct,Lap Number,Running Lap Time,A,a,Zero,Q,N\n"
                    "s,%,,s,,,,,\n\n0,1,1,0,1,1,0,-0,1\n0.5,2,1,1,2,,0,\"-1.5\",2\n1,3,1,1,3,3,0,2,x\n"
                    "0.5,4,1,1.5,3,4,0,3,3,9\n1,5,1,2,5,5,0,2,2\n");
        files.write(u"one.ldx"_s, "<x><i Id='Event' Value='race'/><i Id='R' Value='4' Unit=''/></x>");
        files.write(
            u"several.csv"_s,
            "Sample Rate,0.001\n\nTime,Lap Dist Pct,Lap Number,Lap Current Lap Time,Lap Last Lap Time,A,B,C,D,E,F\n"
            "min,%,,s,s,,,,,,\n\n0,1,1,\"7.5\",1,\"1.5\",\"-.5\",\"1.5\",\"1.5\",\"1.5\",\"1.5\"\n"
            "20,2,1,2,12:30,,,1,1,1,0,0,7\n100,3,1,3,1,2,2\n90,4,1,4,12:31,\" \",2,1\n180,5,1,5,9,1,1,1,1,1,1\n");
        files.write(u"inplace.csv"_s, "K,V\n\nLap Dist Pct,Lap Number,Lap Current Lap Time,Lap Last Lap Time\n1,2,1,1\n"
                                      "3,4,1,1\n5,6,1,1\n7,8,1,1\n");
        auto bad = [](const char *name, quint16 typeCode, quint32 count, quint16 rate = 60) {
            auto made = channel(name, {1, 2, 3, 4, 5, 6}, {}, rate);
            made.header.typeCode = typeCode;
            made.header.sampleCount = count;
            return made;
        };
        const auto counter = channel("lap", {1, 1, 1, 2, 2, 2});
        const auto place = channel("lapdistpct", {1, 50, 99, 1, 50, 99});
        std::vector<LdWriter::Channel> amiss{channel("lap", {1, 1, 1, 2, 2, 2}),
                                             channel("lapdistpct", {1, 50, 99, 1, 50, 99}),
                                             bad("F", 7, 6),
                                             bad("R", 3, 6, 0),
                                             bad("Huge", 3, 0xFFFFFFFF),
                                             channel("Nil", {0, 0, 0, 0, 0, 0}),
                                             bad("Cut", 3, 7)};
        files.write(u"fault.ld"_s, LdWriter::log(amiss));
        amiss.back().header.sampleCount = 13;
        for (const auto &more :
             {bad("G", 7, 6), bad("S", 3, 6, 0), bad("Vast", 3, 0xFFFFFFFF), channel("Nul", {0, 0}), bad("nil", 3, 6)})
            amiss.insert(amiss.end() - 1, more);
        amiss.push_back(bad("Gash", 3, 9));
        files.write(u"faults.ld"_s, LdWriter::log(amiss));
        QByteArray torn =
            LdWriter::log({bad("lap", 3, 4), place, bad("Lap Distance", 5, 6), channel("Beacon", {0, 0, 1, 0}, {}, 1)});
        const auto records = qFromLittleEndian<quint32>(torn.constData() + 8);
        LdWriter::put(torn, records + 3 * 124 + 4, LdInteger<quint32>(0x7FFFFFFF));
        files.write(u"torn.ld"_s, torn);
        LdWriter::put(torn, records + 3 * 124 + 4, LdInteger<quint32>(records));
        files.write(u"round.ld"_s, torn);
        // What files hold that has no place in a lap.
        files.write(u"odd.csv"_s, "Sample Rate,20\n\nTime,A,\"q\"\"x\"\ns,,\n\n0,inf,1e400\n0.05,nan,x\n0.1,\"1,5\"\n");
        files.write(u"longer.csv"_s, "K,V\n\nLap Dist Pct,A\n%,\n\n1,1\n99,2\n1,3\n50,4\n99,5\n");
        auto single = bad("Single", 7, 2, 4);
        single.header.sampleWidth = 4;
        single.samples = LdWriter::raw<float>({0.1F, std::numeric_limits<float>::quiet_NaN()});
        files.write(u"odd.ld"_s, LdWriter::log({channel("Long", {1, 2, 3}, {}, 2), channel("Short", {4}, {}, 2), single,
                                                channel("None", {}, {}, 2)}));
        // Laps of five rows, one second of lap time per row and @p step: an out lap, two laps and a rest.
        const auto laps = [](int step, const char *speedUnit, int firstNumber, const char *driver) {
            QByteArray text = "Driver," + QByteArray(driver) +
                              "\nVenue,Hill\n\nTime,Lap Dist Pct,Lap Number,Lap Last Lap Time,"
                              "Ground Speed,Gear,Lap Distance,Pos X,Pos Y\ns,%,,s," +
                              speedUnit + ",,km,m,m\n\n";
            int time = 0;
            for (int row = 0; row < 18; ++row) {
                const int lap = row / 5;
                const int part = row % 5;
                const int last[]{0, 5 * step, 5 * step, 5 * (step + 1)};
                for (const int cell : {time, 20 * part, firstNumber > 0 ? firstNumber + lap : 0, last[lap], 36 * part,
                                       1 + part, part, 10 * part, part * part})
                    text += QByteArray::number(cell) + ',';
                text.back() = '\n';
                time += lap == 2 ? step + 1 : step;
            }
            return text;
        };
        files.write(u"anna.csv"_s, laps(20, "km/h", 4, "Anna"));
        files.write(u"cara.csv"_s, laps(20, "psi", 0, ""));
        files.write(u"ben.csv"_s, laps(19, "m/s", 0, "<Ben>"));
        files.write(u"ben.ldx"_s, "<x><i Id='Wing' Value='3' Unit='deg'/><i Id='Same' Value='1'/></x>");
        files.write(u"anna.ldx"_s,
                    "<x><i Id='Wing' Value='4' Unit='deg'/><i Id='Same' Value='1'/><i Id='Own' Value='x'/></x>");
        files.write(u"binary.ldx"_s, "<x><i Id='Wing' Value='P4'/></x>");
        QCOMPARE(link(QFile::encodeName(files.path(u"log.csv"_s)), QFile::encodeName(files.path(u"linked"_s))), 0);
        files.write(u"single.csv"_s, "\nLap Dist Pct\n%\n\n1\n2\n");
        QCOMPARE(mkfifo(QFile::encodeName(files.path(u"pipe"_s)).constData(), 0600), 0);
    }

    void runs_data()
    {
        const Table<QByteArray, int, QByteArray> row("command", "status", "error"); // a part of it, or none
        const QByteArray plugin = "[Motec's CSV import plugin plugin] ";
        const QByteArray log = files.path(u"log.csv"_s).toUtf8();
        row("plug-in's messages", "--plugin=" ORVA_PLUGIN " @log.csv", 0,
            plugin + "Importing file " + log + " ...\n" + plugin + "Using format Comma separated text (*.csv)\n");
        row("odd plug-in's message", "+ @log.csv", 0, "[odd plugin] two\uFFFD\uFFFDlines\n");
        row("values of the usual lap", "values @log.csv", 0,
            "log.csv: values of the lap with index 1; --lap selects another\n");
        row("no setup", "setup --json @nosetup.csv", 0, "nosetup.csv: no setup values, expected them in ");
        row("no log", "", 2, "no log given");
        row("log after --", "setup -- -x", 1, "orva-host: ./-x: no such file\n");
        row("no log for a command", "laps -q", 2, "no log given (see orva-host laps --help)");
        row("command after an option", "-q laps @log.csv", 2, "\"laps\" is a command and comes first");
        row("second log", "rewrite -o @new @log.csv @nosetup.csv", 2, "more than one log given: ");
        row("unknown option", "--frob @log.csv", 2, "unknown option --frob (see orva-host laps --help)");
        row("unknown option without a log", "check --frob", 2, "unknown option --frob (see orva-host check --help)");
        row("option without value", "@log.csv --lap", 2, "--lap needs a value");
        row("lap is not a number", "--lap 1.5 @log.csv", 2, "--lap is \"1.5\"");
        row("lap is negative", "--lap=-1 @log.csv", 2, "--lap is \"-1\"");
        row("lap given twice", "--lap 1 --lap 2 @log.csv", 2, "--lap is given more than once");
        row("flag with a value", "--json=3 @log.csv", 2, "--json takes no value");
        row("lap is beyond any", "--lap 99999999999999999999 @log.csv", 2, "--lap is \"99999999999999999999\"");
        row("quote within a name", "values -c a\"b,c @log.csv", 1, "no channel \"a\"b\" in lap 1");
        row("mark that is not a number", "rewrite -o @x --laps-at 1,x @log.csv", 2,
            "--laps-at is \"1,x\", expected seconds");
        row("mark without end", "rewrite -o @x --laps-at 1,inf @log.csv", 2, "expected seconds such as");
        row("marks that fall", "rewrite -o @x --laps-at 1,1 @log.csv", 2,
            "--laps-at is \"1,1\", expected rising seconds");
        row("map of an unknown driving channel", "rewrite -o @x --map Lap=Lap @log.csv", 2,
            "expected NAME=CHANNEL, where NAME is one of");
        row("map without a sign", "rewrite -o @x --map LapNumber @log.csv", 2,
            "--map is \"LapNumber\", expected NAME=");
        row("map to nothing", "rewrite -o @x --map LapNumber= @log.csv", 2, "expected the name of a channel after");
        row("scale of 0", "rewrite -o @x --map LapDistPct=Speed*0 @log.csv", 2, "expected a scale above 0");
        row("map to an asterisk", "rewrite -o @x --map LapNumber=*2 @binary.csv", 1,
            "no channel \"*2\" for \"Lap Number\"");
        row("open quote", "values -c speed,\"rpm @log.csv", 2, "unterminated double quote in --channels 'speed,\"rpm'");
        row("page without a name", "report @log.csv", 2, "--output is required");
        row("page is there", "report -o @nothing @log.csv", 1, "nothing: already there; --force overwrites it");
        row("page is the log", "report --force -o @log.csv @nosetup.csv @log.csv", 1, "log.csv: a log or its sidecar");
        row("page is the sidecar", "report --force -o @log.ldx @log.csv", 1, "log.ldx: a log or its sidecar");
        row("page is a hard link of the log", "report --force -o @linked @log.csv", 1, "linked: a log or its sidecar");
        row("page of an unknown channel", "report --force -o @page --traces rpm @log.csv", 1,
            "no channel \"rpm\" in any lap");
        row("page with a remark", "report --strict --force -o @page @single.csv", 3,
            "single.csv: no channel \"Lap Number\"");
        row("page is a folder", "report --force -o @ @log.csv", 1, "a folder, expected the name of a file to write");
        row("page is a pipe", "report --force -o @pipe @log.csv", 1, "pipe: not a regular file");
        row("page in a missing folder", "report -o @no/page @log.csv", 1, "no/page: cannot be written (");
        row("page of an unknown lap", "report --force -o @page --laps 1,3 @log.csv", 1, "no lap with index 3");
        row("missing file", "@gone.csv", 1, "gone.csv: no such file\n");
        row("directory", "@", 1, ": a folder, expected a log file");
        row("pipe", "@pipe", 1, "pipe: not a regular file");
        row("read error", "/proc/self/mem", 1, "cannot be read");
        row("empty file", "@empty.csv", 1, "empty.csv: the file is empty");
        row("no rows", "@header.csv", 1, "header.csv: no data rows");
        row("plug-in missing", "--plugin @gone.so @log.csv", 1, "gone.so: no such file");
        row("plug-in is a directory", "--plugin @ @log.csv", 1, "not a regular file, expected an import plug-in");
        row("plug-in is text", "--plugin @log.csv @log.csv", 1, "not a plug-in, expected one of interface");
        row("other interface", "--plugin " OTHER_PLUGIN " @log.csv", 1,
            "interface \"kovdata.PluginInterfaceImport/0.1\", expected \"kovdata.PluginInterfaceImport/0.2\"");
        row("lying plug-in", "--plugin " LYING_PLUGIN " @log.csv", 1, "its object does not implement it");
        row("plug-in finds nothing", "--plugin " ODD_PLUGIN " @nothing", 1, "the plug-in \"odd\" found no laps");
        row("plug-in throws", "+ @thrown", 1, "thrown: the plug-in threw an exception\n");
        row("unknown lap", "--lap 3 @log.csv", 1, "no lap with index 3, expected 0 to 2");
        row("unknown channel", "values --channels speed,rpm @log.csv", 1, "no channel \"rpm\" in lap 1");
        row("remark and status of a log without laps", "channels --strict @rates", 3,
            "has no \"lap\" channel; see orva-host check " + files.path(u"rates"_s).toUtf8() + '\n');
        row("no lap without laps", "channels --lap 0 @rates", 1, "has no \"lap\" channel; see orva-host check ");
        row("stored lap", "channels --stored --lap 0 @log.csv", 2, "--lap does not go together with --stored");
        row("unknown stored channel", "values --stored -c slow @rates", 1, "did you mean \"Slow\"?");
        row("channel in another case", "values --channels Speed @log.csv", 1, "did you mean \"speed\"?");
        row("unknown channel for JSON", "values --json --channels rpm @log.csv", 1, "no channel \"rpm\" in any lap");

        files.write(u"it's.csv"_s, "\nspeed\nkm/h\n\n1\n2\n");
        row("hint for a shell", "@it's.csv", 0,
            "see orva-host check '" + files.path(u"it'\\''s.csv"_s).toUtf8() + "'\n");
        auto fileOf = [this, count = 0](const QByteArray &content) mutable {
            const QString name = QString::number(++count);
            files.write(name, content);
            return '@' + name.toUtf8();
        };
        using LdWriter::channel;
        const QByteArray isText = "Using format";
        for (const auto encoding : {QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE,
                                    QStringConverter::Utf32LE, QStringConverter::Utf32BE}) {
            QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
            row(QStringConverter::nameForEncoding(encoding), fileOf(encoder(QString::fromUtf8(exportText))), 0, isText);
        }
        row("Latin-1", fileOf(QString::fromUtf8(exportText).toLatin1()), 0, isText);
        row("bare columns", fileOf("\nspeed\nkm/h\n\n1\n2\n"), 0, isText);
        row("NULs of a torn write", fileOf(exportText + QByteArray(5, '\0')), 0, isText);
        row("NULs only", fileOf(QByteArray(4000, '\0')), 1, "neither a text export nor a binary .ld log");
        row("short NULs", fileOf(QByteArray(7, '\0')), 1, "neither");
        row("image", fileOf(QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x10\0\0\0\x10\x08\2\0\0\0", 29)), 1,
            "neither");
        row("no log at all", "channels --stored " + fileOf("\x1F\x8B\b\0\0"_ba), 1, "neither a text export");
        row("no columns", "values --stored " + fileOf("Venue,X\n\n"), 1,
            "no channels in the file; see orva-host check ");
        row("program", fileOf("\177ELF\2\1\1" + QByteArray(40, '\0')), 1, "neither");

        const auto lap = channel("lap", {1, 1, 1, 1, 1});
        const auto distance = channel("lapdistpct", {1, 1, 1, 1, 1});
        LdHeadBlock named;
        LdWriter::setText(named.venueText, "Zürich");
        LdHeadBlock marked;
        marked.reserved0[0] = 64;
        auto otherKind = lap;
        otherKind.header.typeCode = 7;
        auto huge = channel("lap", {});
        huge.header.sampleCount = 0xFFFFFFFF;
        row("log", fileOf(binaryLog()), 0, ": 1 of 3 laps lasts less than a second; see orva-host check ");
        row("head alone", fileOf(LdWriter::log({}, named)), 1, "without laps: it has no channels;");
        row("cut-off head", fileOf(LdWriter::log({}, marked).first(64)), 1, "it has no channels;");
        row("other kind", fileOf(LdWriter::log({otherKind})), 1, "no channels of a readable kind");
        row("no lap", fileOf(LdWriter::log({distance})), 1, "no \"lap\" channel");
        row("no distance", fileOf(LdWriter::log({lap})), 1, "no \"lapdistpct\" channel");
        row("few samples", fileOf(LdWriter::log({lap, channel("lapdistpct", {1, 1, 1, 1})})), 1,
            "\"lapdistpct\" channel has too few samples");
        row("absurd claim", fileOf(LdWriter::log({huge, distance})), 1,
            "sample count of its \"lap\" channel is implausible for a file of");

        std::vector<LdWriter::Channel> channels{lap, distance};
        for (const char *name : {"%1", "b", "c", "b", "d", "e", "f", "g"}) {
            LdWriter::setText(huge.header.name, name);
            channels.push_back(huge);
        }
        channels.push_back(channel("c", {1, 2, 3})); // a second record of the name, with samples that fit
        channels.push_back(channel("none", {}));
        const QByteArray absurd = LdWriter::log(channels);
        row("absurd claims", fileOf(absurd), 0,
            ": skipped channels whose declared sample count is implausible for a file of " +
                QByteArray::number(absurd.size()) + " bytes: \"%1\", \"b\", \"d\", \"e\", \"f\" and 1 more\n");

        // The most that an honest log asks for: all channels at one per second, short laps, and one lap of each of the
        // 60 samples on the counter's way from one number to the next.
        std::vector<qint16> laps(2700);
        for (std::size_t second = 0; second < laps.size(); ++second)
            laps[second] = static_cast<qint16>(second / 45);
        channels = {channel("lap", laps, {}, 1), channel("lapdistpct", laps, "%", 1)};
        while (channels.size() < 200)
            channels.push_back(channel("c" + QByteArray::number(channels.size()), laps, {}, 1));
        row("slow channels", fileOf(LdWriter::log(channels)), 0,
            "no channel \"lapcurrentlaptime\", \"laplastlaptime\"");
    }
    void runs()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, error);
        const Result result = runHost(command);
        QTEST(result.status, "status");
        QVERIFY2(error.isEmpty() ? result.err.isEmpty() : result.err.contains(error), result.err.constData());
        QCOMPARE(result.out.isEmpty(), result.status == 1 || result.status == 2);
        if (result.out.isEmpty())
            QVERIFY2(result.err.startsWith("orva-host: ") && result.err.indexOf('\n') == result.err.size() - 1,
                     result.err.constData());
    }

    void views_data()
    {
        // A transcript: commands after "$ ", each with what it prints, where "@" means the folder, too.
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
        const Result result = runHost(command + " --quiet");
        QCOMPARE(result.err, QByteArray());
        const QByteArray out = QByteArray(result.out).replace(files.path({}).toUtf8() + '/', "@");
        QTEST(out, "expected");
        QCOMPARE(result.status, command.startsWith("check ") ? 3 : 0);
    }

    void json_data()
    {
        const Table<QByteArray, QList<QByteArray>> row("command", "fragments");
        const QByteArray log = R"("sourceName":"MoTeC","channelCount":4,"lapCount":3,"bestLap":1,"laps":[{"index":)";
        row("laps", "--json @log.csv",
            {R"("venueName":"Zürich","carName":"GT","driverName":"A. B.","session":5,"sessionName":"Race","sourceName":)",
             log + "0,", R"("best":false,"samples":3,"lapNumber":0,"lapKind":0,"completed":true,"lapTimeMs":59250,)",
             R"(},{"index":1,"best":true,"samples":3,"lapNumber":1,"lapKind":1,"completed":true,"lapTimeMs":92500,)",
             R"(},{"index":2,"best":false,"samples":3,"lapNumber":2,"lapKind":1,"completed":false,"lapTimeMs":null,)",
             R"("stintLapIndex":2,"stintNumber":1,"lapId":)", R"("carInfo":{"carId":"","sourceName":"MoTeC",)",
             R"("dynamicData":{"Tyre":{"value":"soft","unit":""},"Wing":{"value":3.5,"unit":"deg"}}}]})"});
        row("setup", "setup --json @log.csv",
            {R"("setup":{"Tyre":{"value":"soft","unit":""},"Wing":{"value":3.5,"unit":"deg"}}})"});
        row("channels", "channels --json @log.csv",
            {log + "0,", R"("unit":"deg"}},"channels":[{"name":"lapdistpct")",
             R"("unit":"km/h","calculated":false,"samples":3,"validSamples":3,"minimum":0.25,"maximum":2.25}]},{)"});
        row("values", "values --json @log.csv",
            {R"("minimum":0.01,"maximum":0.99,"values":[0.01,0.5,0.99]},{)",
             R"("maximum":2.25,"values":[0.25,1.25,2.25]}]},{)"});
        row("one lap and channel", "values --json --lap 1 --channels speed @log.csv",
            {log + "1,", R"("channels":[{"name":"speed",)", R"("maximum":12.25,"values":[10.25,11.25,12.25]}]}]})"});
        row("odd values", "values + --json --lap 0 @log.csv",
            {"\"venueName\":\"\\u001B[2JN\\nring\"", "{\"name\":\"a,\\\"b\\\"\",",
             R"("dynamicData":{"bool":{"value":true,"unit":""},"char":{"value":-120,"unit":""},"double":{"value":null,)",
             R"("float":{"value":0.10000000149011612,"unit":""},"int":{"value":-2054781048,"unit":""},)",
             QByteArray(R"("long":{"value":)") + (sizeof(long) == 8 ? "-9114578090645354616," : "-2054781048,"),
             R"("qlonglong":{"value":-9114578090645354616,)",
             R"("qulonglong":{"value":9332165983064197000,"unit":""},"short":{"value":-30840,"unit":""},)",
             R"("signed char":{"value":-120,"unit":""},"std::nullptr_t":{"value":null,"unit":""},"uchar":{"value":136,)",
             R"("uint":{"value":2240186248,"unit":""},"ulong":{"value":)" +
                 QByteArray(sizeof(long) == 8 ? "9332165983064197000," : "2240186248,"),
             R"("ushort":{"value":34696,"unit":""}},"channels":[{"name":)",
             R"("unit":"","calculated":false,"samples":6,"validSamples":3,"minimum":-0,)",
             R"("maximum":0.1,"values":[-0,0.1,null,null,null,1e-07]},)",
             // a recorded channel hides the calculated one of its name, which would be next
             R"("maximum":123456789,"values":[null,0.3333333333333333,123456789,null,null,null]},{"name":"sum")",
             R"("minimum":null,"maximum":null,"values":[null,null,null,null,null,null]},)"});
    }
    void json()
    {
        QFETCH(QByteArray, command);
        QFETCH(QList<QByteArray>, fragments);
        const Result result = runHost(command);
        QVERIFY(QJsonDocument::fromJson(result.out).isObject());
        QCOMPARE(result.out.indexOf('\n'), result.out.size() - 1);
        for (const QByteArray &fragment : fragments)
            QVERIFY2(result.out.contains(fragment), fragment + " is not in " + result.out);
    }

    // What pages hold: a browser shows them in a test of its own.
    void pages_data()
    {
        const Table<QByteArray, QList<QByteArray>> row("command", "fragments");
        row("one log", "@anna.csv",
            {"<h1>Hill · Anna</h1>",
             R"(value="0"> Lap 0</label></td><td class="number">1:40.000</td><td class="number"></td><td>out lap<)",
             R"(<tr data-ms="100000" class="best"><td><label><input type="checkbox" value="1" checked> Lap 5<)",
             R"(value="2" checked> Lap 6</label></td><td class="number">1:45.000</td><td class="number">+5.000</td><td><)",
             R"(<tr><td><label><input type="checkbox" value="3"> Lap 7</label></td><td class="number">-</td>)",
             "<td>unfinished<", "<small>Lap 5</small>", "viewBox=\"-30 -30 1060 460\"", "d=\"M0 400L1 400",
             R"("length":5000.0,"digits":0},"points":1000,)", "Lap length: 5000 m, by the log's distance channel.",
             R"("name":"Speed","unit":"km/h","source":"groundspeed","digits":1,"shownDigits":1,)",
             R"("source":"compared with Lap 5; above zero is later","digits":4,"shownDigits":3,)"});
        row("two logs", "@anna.csv @ben.csv",
            {"<h1>Hill · Anna, &lt;Ben&gt;</h1>", "<b>B</b>&lt;Ben&gt;<",
             "At first the fastest lap of each log is shown.",
             R"(value="1" checked> A 5</label></td><td class="number">1:40.000</td><td class="number">+5.000<)",
             R"(> A 0</label></td><td class="number">1:40.000</td><td class="number"></td>)",
             "compared with B 1; above", R"(value="2"> A 6<)",
             R"(class="best"><td><label><input type="checkbox" value="5" checked> B 1<)",
             R"("name":"A 5","best":false,"finished":true,"fastest":true,"values":[[0,0,0,1,)",
             R"("name":"B 1","best":true,"finished":true,"fastest":true,"values":[[0,1,0,1,)", // metres per second
             "<tr class=\"differs\"><td>Wing<", "<tr><td>Same<", "<tr><td>Own<"});
        row("some laps and traces", "--laps 0,3 --traces gear,lapdistance,gear @ben.csv",
            {R"(class="best"><td><label><input type="checkbox" value="0" checked> Lap 0<)",
             R"(value="1" checked> Lap 3<)",
             R"("traces":[{"name":"gear","unit":"","source":"","digits":0,"shownDigits":0,"stepped":true,)",
             R"(},{"name":"lapdistance","unit":"km","source":"","digits":2,"shownDigits":2,"stepped":false,"signed":false}])"});
        row("units that do not fit", "@anna.csv @cara.csv",
            {"Speed is in km/h in one lap and in psi in another; the numbers are shown as they are."});
        row("clock against lap times", "@anna.csv @log.csv",
            {"B 1 has no time difference: its clock and its lap time"});
        row("nothing to show", "@single.csv",
            {"<h1>single.csv</h1>", R"("unit":"%","length":100.0,"digits":1})",
             "None of the usual channels is in the log"});
    }
    void pages()
    {
        QFETCH(QByteArray, command);
        QFETCH(QList<QByteArray>, fragments);
        const Result result = runHost("report --force -q -o @page.html " + command);
        QCOMPARE(result.status, 0);
        QFile page(files.path(u"page.html"_s));
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray html = page.readAll();
        for (const QByteArray &fragment : fragments)
            QVERIFY2(html.contains(fragment), fragment + " is not in the page");
    }

    void severalLogs()
    {
        const Result text = runHost("channels -q --lap 0 @log.csv @gone.csv @nosetup.csv @header.csv");
        QCOMPARE(text.status, 1);
        QCOMPARE(text.err.count('\n'), 2);
        QVERIFY(text.out.startsWith(files.path(u"log.csv:\nLap with"_s).toUtf8()));
        QVERIFY(text.out.contains("\n\n" + files.path(u"nosetup.csv:\nLap with"_s).toUtf8()));
        QCOMPARE(text.out.count("csv:\n"), 2);
        const Result json = runHost("setup --json @log.csv @gone.csv @nosetup.csv");
        QCOMPARE(json.status, 1);
        QCOMPARE(json.out.count("{\"command\":\"setup\",\"file\":\""), 2);
        QCOMPARE(json.out.count('\n'), 2);
    }

    void outputFailures()
    {
        const QList<std::pair<QByteArray, QByteArray>> endings{
            {"% > /dev/full; echo $? >&2", "No space left on device"},
            {"% >&-; echo $? >&2", "Bad file descriptor"},
            // A pipe whose reader has gone before the first write.
            {"{ read go < @pipe; %; echo $? >&2; } | { exec <&-; echo > @pipe; }", "Broken pipe"}};
        for (const char *command : {"-q @log.csv", "values -q --json @log.csv", "laps --help"}) {
            for (const auto &[ending, error] : endings) {
                const QByteArray script = QByteArray(ending).replace('%', ORVA_HOST " "_ba + command);
                QCOMPARE(run(u"sh"_s, {u"-c"_s, withFiles(script)}).err,
                         "orva-host: standard output cannot be written: " + error + "\n1\n");
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestHost)
#include "tst_host.moc"
