#pragma once

// Which laps and channels a command line picks out of a log.

#include "host/laps.h"

#include <QtCore/QStringList>

#include <optional>
#include <vector>

namespace Host {

struct Log;

/// The index @p lap alone if there is one, else those of all laps. Throws Failure where @p log has no such lap.
std::vector<qsizetype> selectLaps(const Log &log, std::optional<qsizetype> lap);

/// The index @p lap if there is one, else that of the usual lap. Throws Failure where @p log has no such lap.
qsizetype selectLap(const Log &log, std::optional<qsizetype> lap);

/// Throws Failure for the first of @p names that none of @p laps has a channel of.
void checkNames(const Log &log, const std::vector<qsizetype> &laps, const QStringList &names);

} // namespace Host
