#include "host/channelscommand.h"

#include "host/channelviewcommand.h"
#include "host/lapjson.h"
#include "host/lapviews.h"
#include "host/storedlog.h"

namespace Host {

namespace {

class ChannelsCommand : public ChannelViewCommand
{
public:
    ChannelsCommand()
        : ChannelViewCommand({"channels", "List the channels of a lap with their units and ranges",
                              "Imports each log and lists the channels of a lap: unit, number of samples, how\n"
                              "many of them hold a value, and the smallest and the largest of these values.",
                              "orva-host channels --lap 2 race.csv\norva-host channels --stored race.ld"})
    {
    }

protected:
    void declareOwn(CLI::App & /*app*/) override {}
    void check(const Log & /*log*/, const std::vector<qsizetype> & /*laps*/) const override {}

    void print(const Log &log, const std::vector<qsizetype> &laps, Output &output) const override
    {
        if (logArguments().isJson)
            printLapsJson("channels", log, laps, JsonDetail::Channels, {}, output);
        else
            printChannels(log, laps.front(), output);
    }

    void printStored(const QString &path, LogFormat format, Output &output) const override
    {
        printStoredChannels(path, format, logArguments().isJson, output);
    }
};

} // namespace

std::unique_ptr<Command> channelsCommand()
{
    return std::make_unique<ChannelsCommand>();
}

} // namespace Host
