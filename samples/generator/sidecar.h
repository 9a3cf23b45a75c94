#pragma once

// Writes the .ldx sidecar that lies beside a log: the session and the car's setup.

#include "loginfo.h"

#include <QtCore/QString>

namespace samples {

/// Where readers look for the sidecar of the log at @p logPath: in the same folder, named by the log's name up to its
/// first dot.
QString sidecarPath(const QString &logPath);

/// The sidecar's text. Items with a unit are numbers, the others texts.
QByteArray sidecarText(const LogInfo &info);

} // namespace samples
