#pragma once

// The .ldx sidecar: the XML file beside a log that names its session and its setup values.

#include "orva_export.h"
#include "sdk/session.h"
#include "sdk/value.h"

#include <QtCore/QMap>
#include <QtCore/QString>

// A sidecar is read as QXmlStreamReader reads its file, but counts as cut off after 1 MiB, at elements nested more than
// 64 deep, and at a tag, comment or text of more than 16 KiB. No logger writes such files, and they cost out of
// proportion.

/// The session that a log names as "Race", "Offline testing", "Test", "Qualify", "Practice" or "Warmup", compared
/// case-sensitively; UnknownSession for any other text. Thread-safe.
ORVA_EXPORT KOV::SDK::Session getSessionFromString(const QString &text);

/// The path of the sidecar of the log at @p logPath: in its folder, named by the log's name up to the first dot.
/// Absolute; neither file need exist. Empty for an empty path. Re-entrant.
ORVA_EXPORT QString sidecarPath(const QString &logPath);

/// The session that the sidecar at @p path names: the "Value" of the first element, at any depth, whose "Id" is
/// "Event". UnknownSession if there is none, if its word is not known, and if the file cannot be read or ends in an
/// error before it. Re-entrant.
ORVA_EXPORT KOV::SDK::Session loadSession(const QString &path);

/// The items of the sidecar at @p path by name: every element with an "Id" other than "Event" and "Session".
///
/// "CarSetup_" is removed from the name, wherever it occurs. An item with a "Unit", even an empty one, holds a double
/// with that unit (0.0 if the "Value" is not a number); one without holds the text. Of two items with one name the
/// later counts. A file that cannot be read gives an empty map, and one with an error the items before it. Re-entrant.
ORVA_EXPORT QMap<QString, KOV::SDK::Value> loadValues(const QString &path);
