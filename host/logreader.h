#pragma once

// From the path of a log to its laps, over the road that its content asks for.

#include "host/laps.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Host {

struct Options;

struct Log
{
    QString path;
    Laps laps;            ///< at least one, and at least one of them has channels
    QStringList messages; ///< what the plug-in said meanwhile, and what is missing from a binary log
};

/// Reads the log that @p options name. Throws Failure, also for a log without laps.
///
/// A text export goes through the plug-in, a binary log through the library's own function. Which of them it is matters
/// to the library's own plug-in only: another plug-in gets every file, as it knows best what it can read.
Log readLog(const Options &options);

} // namespace Host
