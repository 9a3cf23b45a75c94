#include "host/channelscommand.h"

#include "host/arguments.h"
#include "host/eachlog.h"
#include "host/lapjson.h"
#include "host/lapviews.h"
#include "host/logreader.h"
#include "host/remarks.h"
#include "host/selection.h"

namespace Host {

namespace {

class ChannelsCommand : public Command
{
public:
    ChannelsCommand()
        : Command({"channels", "List the channels of a lap with their units and ranges",
                   "Imports each log and lists the channels of a lap: unit, number of samples, how many of\n"
                   "them hold a value, and the smallest and the largest of these.",
                   "orva-host channels --lap 2 race.csv"})
    {
    }

    void declare(CLI::App &app) override
    {
        addLogArguments(app, logs);
        addLap(app, lap,
               "Without it, the best lap is shown, or the longest if no\nlap has a time; with --json, all laps");
        addImportArguments(app, import);
    }

    ExitStatus run(Output &output) override
    {
        const LogReader reader(import.pluginPath);
        return forEachLog(logs, output, [&](const QString &path) {
            const Log log = reader.read(path);
            const qsizetype shown = selectLap(log, lap);
            const ExitStatus status = printRemarks(log, logs, import);
            if (logs.isJson)
                printLapsJson("channels", log, selectLaps(log, lap), JsonDetail::Channels, {}, output);
            else
                printChannels(log, shown, output);
            return status;
        });
    }

private:
    LogArguments logs;
    ImportArguments import;
    std::optional<qsizetype> lap;
};

} // namespace

std::unique_ptr<Command> channelsCommand()
{
    return std::make_unique<ChannelsCommand>();
}

} // namespace Host
