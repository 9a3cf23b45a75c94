#include "host/checkcommand.h"

#include "host/arguments.h"
#include "host/checkviews.h"
#include "host/eachlog.h"
#include "host/logreader.h"
#include "inspect/check.h"

namespace Host {

namespace {

class CheckCommand : public Command
{
public:
    CheckCommand()
        : Command({"check", "Say what is amiss with a log, and what to do about it",
                   "Imports each log, reads the file itself as well, and compares the two: what was\n"
                   "lost, what was read as 0, and why there are no laps or no lap times. The most\n"
                   "important finding comes first. Exits with status 3 if there is any.",
                   "orva-host check race.csv"})
    {
    }

    void declare(CLI::App &app) override { addLogArguments(app, logs); }

    ExitStatus run(Output &output) override
    {
        const LogReader reader{QString()};
        return forEachLog(logs, output, [&](const QString &path) {
            Laps laps;
            const Inspect::CheckResult result = checked(reader, path, &laps);
            if (logs.isJson)
                printCheckJson(path, result, laps, output);
            else
                printCheck(result, laps, output);
            return result.findings.isEmpty() ? ExitStatus::Success : ExitStatus::Amiss;
        });
    }

private:
    // A log that gives no laps is what this command is for.
    static Laps importedLaps(const LogReader &reader, const QString &path)
    {
        try {
            return reader.read(path).laps;
        } catch (const NoLaps &) {
            return {};
        }
    }

    static Inspect::CheckResult checked(const LogReader &reader, const QString &path, Laps *laps)
    {
        switch (readFormat(path)) {
        case LogFormat::Text:
            *laps = importedLaps(reader, path);
            return Inspect::checkText(path, *laps);
        case LogFormat::Binary:
            *laps = importedLaps(reader, path);
            return Inspect::checkBinary(path, *laps);
        default:
            return Inspect::checkOther(path);
        }
    }

    LogArguments logs;
};

} // namespace

std::unique_ptr<Command> checkCommand()
{
    return std::make_unique<CheckCommand>();
}

} // namespace Host
