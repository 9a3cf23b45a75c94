#include "host/eachlog.h"

#include "host/arguments.h"
#include "host/output.h"

namespace Host {

ExitStatus forEachLog(const LogArguments &arguments, Output &output,
                      const std::function<ExitStatus(const QString &path)> &action)
{
    auto status = ExitStatus::Success;
    for (const QString &path : arguments.paths) {
        if (arguments.paths.size() > 1 && !arguments.isJson)
            output.beginBlock(path);
        status = worse(status, guardedFor(path, [&] { return action(path); }));
        output.flush(); // before what the next log may bring on standard error
    }
    return status;
}

} // namespace Host
