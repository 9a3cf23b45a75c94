#pragma once

// The work to be timed: one import of a log, text or binary by its name.

#include "childrun.h"

#include <QtCore/QString>

/// Imports the log at @p path, stops @p watch and answers how many samples its laps hold.
qint64 importLog(const QString &path, Stopwatch *watch);
