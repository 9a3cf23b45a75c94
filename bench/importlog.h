#pragma once

// The work to time: one import of a log, text or binary by its name.

#include "childrun.h"

#include <QtCore/QString>

/// Imports the log at @p path, stops @p watch and returns the number of samples in its laps.
qint64 importLog(const QString &path, Stopwatch *watch);
