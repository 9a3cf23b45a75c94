#pragma once

// Which laps and channels the options pick out of a log.

#include "host/laps.h"

#include <QtCore/QStringList>

#include <vector>

namespace Host {

struct Log;
struct Options;

struct Selection
{
    std::vector<qsizetype> laps; ///< indices, ascending; a view of one lap has one
    QStringList valueNames;      ///< each is a channel of at least one of these laps
};

/// Checks what @p options ask for against @p log, so that the views can print without a second thought. Throws Failure
/// for a lap or a channel that is not there.
Selection select(const Log &log, const Options &options);

} // namespace Host
