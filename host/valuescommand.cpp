#include "host/valuescommand.h"

#include "host/arguments.h"
#include "host/eachlog.h"
#include "host/lapjson.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/remarks.h"
#include "host/selection.h"
#include "host/valuetable.h"

namespace Host {

namespace {

class ValuesCommand : public Command
{
public:
    ValuesCommand()
        : Command({"values", "Print the samples of a lap as comma-separated text",
                   "Imports each log and prints the samples of a lap as comma-separated text, a column per\n"
                   "channel. Numbers read back exactly; a sample without a value is an empty field.",
                   "orva-host values --lap 2 --channels lapdistpct,speed race.csv > lap2.csv"})
    {
    }

    void declare(CLI::App &app) override
    {
        addLogArguments(app, logs);
        addLap(app, lap,
               "Without it, the best lap is shown, or the longest if no\nlap has a time; with --json, all laps");
        addNames(app, "-c,--channels", "NAME,...", names,
                 "Print these channels only; repeatable. Put a name that\nholds a comma in double quotes");
        addImportArguments(app, import);
    }

    ExitStatus run(Output &output) override
    {
        const LogReader reader(import.pluginPath);
        return forEachLog(logs, output, [&](const QString &path) { return print(reader.read(path), output); });
    }

private:
    ExitStatus print(const Log &log, Output &output) const
    {
        const qsizetype index = selectLap(log, lap);
        const auto laps = logs.isJson ? selectLaps(log, lap) : std::vector{index};
        checkNames(log, laps, names);
        const ExitStatus status = printRemarks(log, logs, import);
        if (logs.isJson) {
            printLapsJson("values", log, laps, JsonDetail::Values, names, output);
            return status;
        }
        if (!lap && !logs.isQuiet && log.laps.size() > 1)
            printError(
                QStringLiteral("%1: values of the lap with index %2; --lap selects another").arg(log.path).arg(index));
        printValues(log, index, names.isEmpty() ? channelNames(*log.laps[index]) : names, output);
        return status;
    }

    LogArguments logs;
    ImportArguments import;
    std::optional<qsizetype> lap;
    QStringList names;
};

} // namespace

std::unique_ptr<Command> valuesCommand()
{
    return std::make_unique<ValuesCommand>();
}

} // namespace Host
