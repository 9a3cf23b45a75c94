#include "host/setupcommand.h"

#include "host/arguments.h"
#include "host/eachlog.h"
#include "host/lapjson.h"
#include "host/lapviews.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/remarks.h"
#include "host/selection.h"
#include "ld/ldx.h"

namespace Host {

namespace {

class SetupCommand : public Command
{
public:
    SetupCommand()
        : Command({"setup", "List the setup values",
                   "Imports each log and lists the setup values of the .ldx file beside it.",
                   "orva-host setup race.csv"})
    {
    }

    void declare(CLI::App &app) override
    {
        addLogArguments(app, logs);
        addImportArguments(app, import);
    }

    ExitStatus run(Output &output) override
    {
        const LogReader reader(import.pluginPath);
        return forEachLog(logs, output, [&](const QString &path) {
            const Log log = reader.read(path);
            const qsizetype lap = usualLap(log.laps); // the values are those of the whole log
            const ExitStatus status = printRemarks(log, logs, import);
            if (!logs.isQuiet && log.laps[lap]->header().dynamicData.isEmpty())
                printError(QStringLiteral("%1: no setup values, expected them in %2").arg(path, sidecarPath(path)));
            if (logs.isJson)
                printSetupJson(log, lap, output);
            else
                printSetup(log, lap, output);
            return status;
        });
    }

private:
    LogArguments logs;
    ImportArguments import;
};

} // namespace

std::unique_ptr<Command> setupCommand()
{
    return std::make_unique<SetupCommand>();
}

} // namespace Host
