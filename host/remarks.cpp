#include "host/remarks.h"

#include "host/arguments.h"
#include "host/logreader.h"
#include "host/output.h"

namespace Host {

namespace {

ExitStatus print(const QStringList &messages, const QStringList &remarks, const LogArguments &logs,
                 const ImportArguments &import)
{
    if (!logs.isQuiet) {
        for (const QString &text : messages + remarks)
            printError(text);
    }
    return import.isStrict && !remarks.isEmpty() ? ExitStatus::Amiss : ExitStatus::Success;
}

} // namespace

QString checkHint(const QString &path)
{
    return QLatin1String("; see orva-host check ") + path;
}

ExitStatus printRemarks(const Log &log, const LogArguments &logs, const ImportArguments &import)
{
    return print(log.messages, log.remarks, logs, import);
}

ExitStatus printRemark(const QString &remark, const LogArguments &logs, const ImportArguments &import)
{
    return print({}, {remark}, logs, import);
}

} // namespace Host
