#pragma once

// Free functions beside the model: the validity rule for bare numbers, the display texts, and names for new files.

#include "orva_export.h"
#include "sdk/carstatus.h"
#include "sdk/session.h"

#include <QtCore/QDir>
#include <QtCore/QString>

namespace KOV::SDK {

/// Whether @p value counts as a sample: strictly below invalidThreshold (channel.h). NaN and +infinity do not,
/// -infinity does. Thread-safe.
ORVA_EXPORT bool isValidValue(double value);

/// The English display text of @p session; "Unknown session" for a number outside the enumeration.
/// The texts are for people: getSessionFromString (ld/ldx.h) reads another vocabulary. Thread-safe.
ORVA_EXPORT QString sessionName(Session session);

/// The English display text of @p status; a null string for a number outside the enumeration. Thread-safe.
ORVA_EXPORT QString carStatusToString(CarStatus status);

/// The absolute path of a file in @p directory that is not there yet: "base.suffix", or else the first free one of
/// "base_1.suffix", "base_2.suffix" and so on.
///
/// The base is the last component of @p fileName up to its first dot, the suffix what follows its last dot; the dot
/// between them is always written. Only the directory's visible files with a dot in their names count as being there;
/// names are compared case-sensitively on every file system. Creates and reserves nothing: another program may use the
/// name before the caller does. A directory that is missing or cannot be read counts as empty. Thread-safe. Lists the
/// directory once.
ORVA_EXPORT QString generateUniqueFileName(const QDir &directory, const QString &fileName);

} // namespace KOV::SDK
