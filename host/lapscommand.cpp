#include "host/lapscommand.h"

#include "host/arguments.h"
#include "host/eachlog.h"
#include "host/lapjson.h"
#include "host/lapviews.h"
#include "host/logreader.h"
#include "host/remarks.h"
#include "host/selection.h"

namespace Host {

namespace {

class LapsCommand : public Command
{
public:
    LapsCommand()
        : Command({"laps", "List the laps and their times (the default)",
                   "Imports each log and lists its laps with their times, the best one marked.",
                   "orva-host laps --lap 2 race.csv"})
    {
    }

    void declare(CLI::App &app) override
    {
        addLogArguments(app, logs);
        addLap(app, lap, "Show only the lap with index N, counted from 0");
        addImportArguments(app, import);
    }

    ExitStatus run(Output &output) override
    {
        const LogReader reader(import.pluginPath);
        return forEachLog(logs, output, [&](const QString &path) {
            const Log log = reader.read(path);
            const auto laps = selectLaps(log, lap);
            const ExitStatus status = printRemarks(log, logs, import);
            if (logs.isJson)
                printLapsJson("laps", log, laps, JsonDetail::Headers, {}, output);
            else
                printLaps(log, laps, output);
            return status;
        });
    }

private:
    LogArguments logs;
    ImportArguments import;
    std::optional<qsizetype> lap;
};

} // namespace

std::unique_ptr<Command> lapsCommand()
{
    return std::make_unique<LapsCommand>();
}

} // namespace Host
