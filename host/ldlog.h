#pragma once

// Reads a binary .ld log by the library's own function, and says why it has no laps or lacks channels.

#include "host/logreader.h"

#include <QtCore/QString>

namespace Host {

/// The .ld log at @p path, each lap with the setup values of the .ldx file beside it, as a text export's laps have
/// them. A remark names channels that the library has skipped because they declare more samples than the file's size
/// makes plausible. Throws Failure with the reason if there are no laps.
Log loadLdLog(const QString &path);

} // namespace Host
