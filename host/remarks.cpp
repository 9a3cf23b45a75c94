#include "host/remarks.h"

#include "host/arguments.h"
#include "host/logreader.h"
#include "host/output.h"

#include <QtCore/QRegularExpression>

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
    static const QRegularExpression special(QStringLiteral("[^\\w%+,./:=@-]"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    QString word = path; // as a shell takes it
    if (word.contains(special))
        word = u'\'' + word.replace(u'\'', QLatin1String("'\\''")) + u'\'';
    return QLatin1String("; see orva-host check ") + word;
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
