#pragma once

// One log after the other: names before the results, no stop at a failure, the worst status in the end.

#include "host/failure.h"

#include <QtCore/QString>

#include <functional>

namespace Host {

class Output;
struct LogArguments;

/// Calls @p action for each log. Where one throws, prints the one line of a failure and goes on with the next; returns
/// the worst status. Of several logs, the first thing that an action writes to @p output has the log's name before it,
/// unless it is JSON, which names its log itself.
ExitStatus forEachLog(const LogArguments &arguments, Output &output,
                      const std::function<ExitStatus(const QString &path)> &action);

} // namespace Host
