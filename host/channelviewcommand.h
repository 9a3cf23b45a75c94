#pragma once

// What the commands that show the channels of a lap have in common: which lap, and what to do without laps.

#include "host/arguments.h"
#include "host/command.h"
#include "host/logformat.h"

#include <vector>

namespace Host {

struct Log;

class ChannelViewCommand : public Command
{
public:
    using Command::Command;

    void declare(CLI::App &app) final;
    ExitStatus run(Output &output) final;

protected:
    virtual void declareOwn(CLI::App &app) = 0;
    /// Throws Failure where @p log does not have what is asked for.
    virtual void check(const Log &log, const std::vector<qsizetype> &laps) const = 0;
    /// Prints of @p log the channels of @p laps: one lap for people, one or more as JSON.
    virtual void print(const Log &log, const std::vector<qsizetype> &laps, Output &output) const = 0;
    virtual void printStored(const QString &path, LogFormat format, Output &output) const = 0;

    const LogArguments &logArguments() const { return logs; }
    const LapArguments &lapArguments() const { return which; }

private:
    ExitStatus show(const Log &log, Output &output) const;

    LogArguments logs;
    ImportArguments import;
    LapArguments which;
};

} // namespace Host
