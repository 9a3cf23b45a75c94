#pragma once

// What goes to standard error besides errors: what the plug-in said, and why a result looks empty.

#include "host/failure.h"

#include <QtCore/QString>

namespace Host {

struct ImportArguments;
struct Log;
struct LogArguments;

/// The end of a line about what is amiss with the log at @p path: where to read more.
QString checkHint(const QString &path);

/// Prints the messages and remarks of @p log unless @p logs want none, and returns the status of a log that has been
/// read: ExitStatus::Amiss if there is a remark and @p import is strict.
///
/// A log that fails prints its one line alone, so call this once all has been checked.
ExitStatus printRemarks(const Log &log, const LogArguments &logs, const ImportArguments &import);
/// The same of a single remark.
ExitStatus printRemark(const QString &remark, const LogArguments &logs, const ImportArguments &import);

} // namespace Host
