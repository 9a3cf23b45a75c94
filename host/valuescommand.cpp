#include "host/valuescommand.h"

#include "host/channelviewcommand.h"
#include "host/lapjson.h"
#include "host/laps.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/selection.h"
#include "host/storedlog.h"
#include "host/valuetable.h"

namespace Host {

namespace {

class ValuesCommand : public ChannelViewCommand
{
public:
    ValuesCommand()
        : ChannelViewCommand({"values", "Print the samples of a lap as comma-separated text",
                              "Imports each log and prints the samples of a lap as comma-separated text, with\n"
                              "one column per channel. Numbers read back exactly; a sample without a value is\n"
                              "an empty field.",
                              "orva-host values --lap 2 --channels lapdistpct,speed race.csv > lap2.csv"})
    {
    }

protected:
    void declareOwn(CLI::App &app) override
    {
        addNames(app, "-c,--channels", "NAME,...", names,
                 "Print only these channels; may be repeated. Put a name\n"
                 "that contains a comma in double quotes");
    }

    void check(const Log &log, const std::vector<qsizetype> &laps) const override { checkNames(log, laps, names); }

    void print(const Log &log, const std::vector<qsizetype> &laps, Output &output) const override
    {
        if (logArguments().isJson) {
            printLapsJson("values", log, laps, JsonDetail::Values, names, output);
            return;
        }
        const qsizetype lap = laps.front();
        if (!lapArguments().lap && !logArguments().isQuiet && log.laps.size() > 1)
            printError(
                QStringLiteral("%1: values of the lap with index %2; --lap selects another").arg(log.path).arg(lap));
        printValues(log, lap, names.isEmpty() ? channelNames(*log.laps[lap]) : names, output);
    }

    void printStored(const QString &path, LogFormat format, Output &output) const override
    {
        printStoredValues(path, format, names, logArguments().isJson, output);
    }

private:
    QStringList names;
};

} // namespace

std::unique_ptr<Command> valuesCommand()
{
    return std::make_unique<ValuesCommand>();
}

} // namespace Host
