#pragma once

// Writes .ldx sidecars: the session and named values beside a log. Reading them: sidecar.h.

#include "inspect/sidecar.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>

namespace Inspect {

/// The text of a sidecar with @p items in their order. An item with a unit is a number to its readers, any other a
/// text. Characters that XML cannot carry are left out.
QByteArray sidecarText(const QList<SidecarItem> &items);

} // namespace Inspect
