#include "host/setupcommand.h"

#include "host/arguments.h"
#include "host/eachlog.h"
#include "host/lapjson.h"
#include "host/lapviews.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/remarks.h"
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
            try {
                const Log log = reader.read(path);
                const ExitStatus status = printRemarks(log, logs, import);
                print(path, log.laps[usualLap(log.laps)]->header().dynamicData, output); // of all laps the same
                return status;
            } catch (const NoLaps &failure) {
                const ExitStatus status = printRemark(failure.text(), logs, import);
                print(path, sidecarValues(path), output);
                return status;
            }
        });
    }

private:
    static KOV::SDK::DynamicData sidecarValues(const QString &path)
    {
        KOV::SDK::DynamicData values;
        const auto items = loadValues(sidecarPath(path));
        for (auto item = items.cbegin(); item != items.cend(); ++item)
            values.setValue(item.key(), item.value());
        return values;
    }

    void print(const QString &path, const KOV::SDK::DynamicData &values, Output &output) const
    {
        if (!logs.isQuiet && values.isEmpty())
            printError(QStringLiteral("%1: no setup values, expected them in %2").arg(path, sidecarPath(path)));
        if (logs.isJson)
            printSetupJson(path, values, output);
        else
            printSetup(values, output);
    }

    LogArguments logs;
    ImportArguments import;
};

} // namespace

std::unique_ptr<Command> setupCommand()
{
    return std::make_unique<SetupCommand>();
}

} // namespace Host
