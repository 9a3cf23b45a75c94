#pragma once

// The road of a binary .ld log: the library's own function, and what to say of a log that it finds no laps in.

#include "host/logreader.h"

#include <QtCore/QString>

namespace Host {

/// The .ld log at @p path, each lap with the setup values of the .ldx file beside it, as a text export's laps have
/// them. A message tells of channels that the library has passed over, as they claim more than the file can hold.
/// Throws Failure where there are no laps, with the reason.
Log loadLdLog(const QString &path);

} // namespace Host
