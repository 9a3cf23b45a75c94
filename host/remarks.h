#pragma once

// What stands on standard error beside the result: what the plug-in said, and what makes a result look empty.

#include "host/failure.h"

namespace Host {

struct ImportArguments;
struct Log;
struct LogArguments;

/// Prints the messages and remarks of @p log unless @p logs want none, and returns the status of a log that has been
/// read: ExitStatus::Amiss if there is a remark and @p import is strict.
///
/// A log that fails prints its one line alone, so call this once all has been checked.
ExitStatus printRemarks(const Log &log, const LogArguments &logs, const ImportArguments &import);

} // namespace Host
