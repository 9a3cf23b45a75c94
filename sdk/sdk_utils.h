#pragma once

// Free functions on the model's small types: the validity rule for bare numbers and the display texts.

#include "orva_export.h"
#include "sdk/carstatus.h"
#include "sdk/session.h"

#include <QtCore/QString>

namespace KOV::SDK {

/// Whether @p value counts as a sample: strictly below invalidThreshold (channel.h). NaN and +infinity do not,
/// -infinity does. Thread-safe.
ORVA_EXPORT bool isValidValue(double value);

/// The English display text of @p session; "Unknown session" for a number that is none of the enumeration's.
/// The texts are for people: getSessionFromString (ld/ldx.h) reads another vocabulary. Thread-safe.
ORVA_EXPORT QString sessionName(Session session);

/// The English display text of @p status; a null string for a number that is none of the enumeration's. Thread-safe.
ORVA_EXPORT QString carStatusToString(CarStatus status);

} // namespace KOV::SDK
