#include "host/remarks.h"

#include "host/arguments.h"
#include "host/logreader.h"
#include "host/output.h"

namespace Host {

ExitStatus printRemarks(const Log &log, const LogArguments &logs, const ImportArguments &import)
{
    if (!logs.isQuiet) {
        for (const QString &text : log.messages + log.remarks)
            printError(text);
    }
    return import.isStrict && !log.remarks.isEmpty() ? ExitStatus::Amiss : ExitStatus::Success;
}

} // namespace Host
