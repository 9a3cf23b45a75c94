#pragma once

// The road of a binary .ld log: the library's own function, and what to say of a log that it finds no laps in.

#include "host/laps.h"

#include <QtCore/QString>

namespace Host {

/// The laps of the .ld log at @p path, each with the setup values of the .ldx file beside it, as a text export's laps
/// have them. Throws Failure where there are none, with the reason.
Laps loadLdLog(const QString &path);

/// The .ldx sidecar of the log at @p path: beside it, under the part of its name before the first dot.
QString sidecarOf(const QString &path);

} // namespace Host
