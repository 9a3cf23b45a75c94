#include "host/reportcommand.h"

#include "host/arguments.h"
#include "host/logreader.h"
#include "host/newfile.h"
#include "host/output.h"
#include "host/page.h"
#include "host/pagemodel.h"
#include "host/remarks.h"
#include "inspect/words.h"
#include "ld/ldx.h"

#include <CLI/CLI.hpp>

#include <set>

namespace Host {

namespace {

class ReportCommand : public Command
{
public:
    ReportCommand()
        : Command({"report", "Write a page with charts of the laps, for a browser",
                   "Imports the logs and writes one HTML page: laps laid over each other in charts,\n"
                   "with a track map, lap times and setup values. The page is one file that loads\n"
                   "nothing else. Several logs on one page compare drivers or setups.",
                   "orva-host report race.csv -o race.html\n"
                   "orva-host report anna.csv ben.csv --title \"Anna and Ben\" -o both.html"})
    {
    }

    void declare(CLI::App &app) override
    {
        addLogs(app, logs);
        addText(app, "-o,--output", "PAGE.html", path, "Write the page to this file")->required();
        addFlag(app, "--force", isForced, "Overwrite the page if it is already there");
        addNames(app, "--laps", "N,...", lapTexts, "Only the laps with these indices, counted from 0");
        addNames(app, "--traces", "NAME,...", wishes.traces,
                 "Charts of these channels instead of speed, throttle,\nbrake, gear and steering");
        addText(app, "--title", "TEXT", title, "The page's title");
        addImportArguments(app, import);
    }

    ExitStatus run(Output &output) override
    {
        std::set<qsizetype> laps;
        for (const QString &text : std::as_const(lapTexts))
            laps.insert(lapIndex(text, QStringLiteral("--laps")));
        wishes.laps.assign(laps.begin(), laps.end());
        wishes.traces.removeDuplicates();
        QStringList sources = logs.paths;
        for (const QString &log : std::as_const(logs.paths))
            sources.append(sidecarPath(log));
        const NewFile file(path, sources, isForced);
        const LogReader reader(import.pluginPath);
        std::vector<Log> read;
        for (const QString &log : std::as_const(logs.paths))
            read.push_back(reader.read(log));
        const PageModel model = pageModel(read, wishes);
        file.write(pageHtml(read, model, title));

        auto status = ExitStatus::Success;
        for (const Log &log : read)
            status = worse(status, printRemarks(log, logs, import));
        if (!logs.isQuiet)
            output.writeText(QStringLiteral("Wrote %1: %2, %3\n")
                                 .arg(path, Inspect::counted(std::ssize(model.laps), QStringLiteral("lap")),
                                      Inspect::counted(std::ssize(model.traces), QStringLiteral("chart"))));
        return status;
    }

private:
    LogArguments logs;
    ImportArguments import;
    QString path;
    bool isForced = false;
    QString title;
    QStringList lapTexts;
    PageWishes wishes;
};

} // namespace

std::unique_ptr<Command> reportCommand()
{
    return std::make_unique<ReportCommand>();
}

} // namespace Host
