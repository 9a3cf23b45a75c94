#include "host/channelviewcommand.h"

#include "host/eachlog.h"
#include "host/logreader.h"
#include "host/remarks.h"
#include "host/selection.h"
#include "host/storedlog.h"

namespace Host {

void ChannelViewCommand::declare(CLI::App &app)
{
    addLogArguments(app, logs);
    addLapArguments(app, which);
    declareOwn(app);
    addImportArguments(app, import);
}

ExitStatus ChannelViewCommand::run(Output &output)
{
    const LogReader reader(import.pluginPath);
    return forEachLog(logs, output, [&](const QString &path) {
        auto status = ExitStatus::Success;
        if (!which.isStored) {
            try {
                return show(reader.read(path), output);
            } catch (const NoLaps &failure) {
                if (which.lap || !hasStoredChannels(path, readFormat(path)))
                    throw;
                status = printRemark(failure.text(), logs, import);
            }
        }
        const LogFormat format = readFormat(path);
        if (format == LogFormat::Unknown)
            throw notALog(path);
        if (!hasStoredChannels(path, format))
            throw Failure(path + QLatin1String(": no channels in the file") + checkHint(path));
        printStored(path, format, output);
        return status;
    });
}

ExitStatus ChannelViewCommand::show(const Log &log, Output &output) const
{
    const auto laps = logs.isJson ? selectLaps(log, which.lap) : std::vector{selectLap(log, which.lap)};
    check(log, laps);
    const ExitStatus status = printRemarks(log, logs, import);
    print(log, laps, output);
    return status;
}

} // namespace Host
