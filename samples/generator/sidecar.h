#pragma once

// What the .ldx sidecar beside a log holds: the session and the car's setup.

#include "loginfo.h"

#include "inspect/sidecar.h"

#include <QtCore/QList>

namespace samples {

/// The items of the sidecar. Those with a unit are numbers, the others texts.
QList<Inspect::SidecarItem> sidecarItems(const LogInfo &info);

} // namespace samples
