#include "host/rewritecommand.h"

#include "host/arguments.h"
#include "host/lapviews.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/platform.h"
#include "host/remarks.h"
#include "host/selection.h"
#include "host/textformat.h"
#include "inspect/rewrite.h"
#include "inspect/rewriteerror.h"
#include "inspect/words.h"

#include <CLI/CLI.hpp>
#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Host {

namespace {

[[noreturn]] void refuse(const QString &text)
{
    throw Failure(text, ExitStatus::BadCommandLine);
}

// "Lap Dist Pct=Car Pos Norm*100": a driving channel, a channel of the log, and a scale if a number follows the last
// asterisk.
Inspect::LapMapping parsedMapping(const QString &text)
{
    const qsizetype equals = text.indexOf(u'=');
    const QString target = text.first(std::max<qsizetype>(equals, 0)).trimmed();
    const Inspect::DrivingChannel *driving = Inspect::drivingChannelOfTitle(target);
    if (equals < 0 || !driving) {
        QStringList names;
        for (const Inspect::DrivingChannel &channel : Inspect::drivingChannels())
            names.append(u'"' + QString(channel.title) + u'"');
        refuse(QStringLiteral("--map is \"%1\", expected NAME=CHANNEL, where NAME is one of %2")
                   .arg(text, names.join(QLatin1String(", "))));
    }
    Inspect::LapMapping mapping{driving->role, text.mid(equals + 1).trimmed(), {}};
    bool isNumber = false;
    const qsizetype asterisk = mapping.title.lastIndexOf(u'*');
    const double scale = mapping.title.mid(asterisk + 1).toDouble(&isNumber);
    if (asterisk > 0 && isNumber) {
        if (!(std::isfinite(scale) && scale > 0.0))
            refuse(QStringLiteral("--map is \"%1\", expected a scale above 0").arg(text));
        mapping.scale = scale;
        mapping.title = mapping.title.first(asterisk).trimmed();
    }
    if (mapping.title.isEmpty())
        refuse(QStringLiteral("--map is \"%1\", expected the name of a channel after the equals sign").arg(text));
    return mapping;
}

std::vector<double> parsedMarks(const QString &text)
{
    std::vector<double> marks;
    for (const QString &word : text.split(u',')) {
        bool isNumber = false;
        const double mark = word.trimmed().toDouble(&isNumber);
        if (!isNumber || !std::isfinite(mark))
            refuse(QStringLiteral("--laps-at is \"%1\", expected seconds such as 24.324,190.167").arg(text));
        if (!marks.empty() && mark <= marks.back())
            refuse(QStringLiteral("--laps-at is \"%1\", expected rising seconds").arg(text));
        marks.push_back(mark);
    }
    return marks;
}

// One line on a terminal that says how far the work is, once it takes longer than a second.
class ProgressLine
{
public:
    explicit ProgressLine(bool isWanted)
        : isWanted(isWanted && isErrorTerminal())
    {
        timer.start();
    }
    ~ProgressLine()
    {
        if (isShown)
            std::fputs("\r\033[K", stderr);
    }
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void tell(double share)
    {
        constexpr qint64 quietMs = 1000;
        constexpr qint64 stepMs = 100;
        if (!isWanted || timer.elapsed() < std::max(quietMs, lastMs + stepMs))
            return;
        lastMs = timer.elapsed();
        isShown = true;
        std::fprintf(stderr, "\rrewriting: %3d %%", static_cast<int>(100.0 * share));
        std::fflush(stderr);
    }

private:
    bool isWanted;
    bool isShown = false;
    qint64 lastMs = 0;
    QElapsedTimer timer;
};

void printFact(const QString &title, const QString &text, Output &output)
{
    constexpr qsizetype titleWidth = 22;
    output.writeText(title.leftJustified(titleWidth) + printable(text) + u'\n');
}

void printSummary(const Inspect::RewriteOptions &options, const Inspect::RewriteSummary &summary, Output &output)
{
    printFact(QStringLiteral("Source"), summary.source, output);
    printFact(QStringLiteral("Written"),
              QStringLiteral("%1: %2 at %3 per second, %4")
                  .arg(options.targetPath, Inspect::counted(summary.rows, QStringLiteral("row")))
                  .arg(Inspect::rewriteRate)
                  .arg(Inspect::counted(summary.channels, QStringLiteral("channel"))),
              output);
    printFact(QStringLiteral("Rows"), summary.rate, output);
    if (!summary.sidecarPath.isEmpty())
        printFact(QStringLiteral("Sidecar"),
                  QStringLiteral("%1: %2").arg(summary.sidecarPath,
                                               Inspect::counted(summary.sidecarItems, QStringLiteral("item"))),
                  output);
    printFact(QStringLiteral("Laps"),
              summary.laps.isEmpty()
                  ? QStringLiteral("not known, as nothing in the log marks them; use --laps-at or --map")
                  : summary.laps,
              output);
    for (const auto &origin : summary.origins)
        printFact(origin.title, origin.text.isEmpty() ? QStringLiteral("left out, as it is not known") : origin.text,
                  output);
}

class RewriteCommand : public Command
{
public:
    RewriteCommand()
        : Command({"rewrite", "Write a new export of a log that the import reads in full",
                   "Writes any text export or .ld log as a new text export that the import reads in\n"
                   "full, and its sidecar: 60 rows per second, with the four channels that laps come\n"
                   "from, if the log says where laps begin. Then imports it and lists its laps.",
                   "orva-host rewrite race.ld -o race-laps.csv\n"
                   "orva-host rewrite race.csv -o race-laps.csv --laps-at 24.324,190.167\n"
                   "orva-host rewrite race.csv -o race-laps.csv --map \"Lap Dist Pct=Car Pos Norm\""})
    {
    }

    void declare(CLI::App &app) override
    {
        app.add_option_function<std::string>(
               "LOG", [this](const std::string &path) { options.sourcePath = QString::fromStdString(path); },
               "A telemetry log")
            ->option_text(" ")
            ->required();
        addText(app, "-o,--output", "FILE", options.targetPath, "Write the new export to this file")->required();
        app.add_option_function<std::vector<std::string>>(
               "--map",
               [this](const std::vector<std::string> &texts) {
                   for (const std::string &text : texts)
                       options.mappings.push_back(parsedMapping(QString::fromStdString(text)));
               },
               "Take one of the four channels from a channel of the log.\n"
               "A scale may follow: \"Lap Dist Pct=Pos*100\". Repeatable")
            ->option_text("NAME=CHANNEL")
            ->allow_extra_args(false);
        app.add_option_function<std::string>(
               "--laps-at",
               [this](const std::string &text) { options.lapsAt = parsedMarks(QString::fromStdString(text)); },
               "Laps begin at these times of the log, in seconds")
            ->option_text("T,T,...");
        addFlag(app, "--force", options.mayOverwrite, "Overwrite the file and its sidecar if already there");
        addFlag(app, "-q,--quiet", isQuiet, "Do not print remarks and progress");
    }

    ExitStatus run(Output &output) override
    {
        const LogFormat format = readFormat(options.sourcePath);
        if (format == LogFormat::Unknown)
            throw notALog(options.sourcePath);
        const LogReader reader{QString()}; // first, since without the plug-in nothing can be imported in the end
        const Inspect::RewriteSummary summary = rewrite(format == LogFormat::Binary);
        printSummary(options, summary, output);
        output.flush();
        if (!isQuiet) {
            for (const QString &remark : summary.remarks)
                printError(options.sourcePath + QLatin1String(": ") + remark);
        }
        output.writeText(QStringLiteral("\n"));
        const Log log = reader.read(options.targetPath);
        printLaps(log, selectLaps(log, {}), output);
        return ExitStatus::Success;
    }

private:
    Inspect::RewriteSummary rewrite(bool isBinary)
    {
        ProgressLine line(!isQuiet);
        options.progress = [&line](double share) { line.tell(share); };
        try {
            return Inspect::rewriteLog(options, isBinary);
        } catch (const Inspect::RewriteError &error) {
            throw Failure(options.sourcePath + QLatin1String(": ") + error.text());
        }
    }

    Inspect::RewriteOptions options;
    bool isQuiet = false;
};

} // namespace

std::unique_ptr<Command> rewriteCommand()
{
    return std::make_unique<RewriteCommand>();
}

} // namespace Host
