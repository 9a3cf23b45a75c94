#pragma once

// The .ldx sidecar: the XML file beside a log that names its session and its setup values.

#include "orva_export.h"
#include "sdk/session.h"
#include "sdk/value.h"

#include <QtCore/QMap>
#include <QtCore/QString>

// A sidecar counts as broken off behind 1 MiB, at elements nested more than 64 deep, and at a tag, comment or text of
// more than 16 KiB: what goes beyond that was not written by a logger, and costs out of proportion.

/// The session that a log's own word for it means: "Race", "Offline testing", "Test", "Qualify", "Practice" or
/// "Warmup", exactly so; UnknownSession for any other text. Thread-safe.
ORVA_EXPORT KOV::SDK::Session getSessionFromString(const QString &text);

/// The path of the sidecar of the log at @p logPath: in its folder, named by the log's name up to the first dot.
/// Absolute; neither file need exist. Empty for an empty path. Re-entrant.
ORVA_EXPORT QString sidecarPath(const QString &logPath);

/// The session that the sidecar at @p path names: the "Value" of the first element, wherever it stands, whose "Id" is
/// "Event". UnknownSession when there is none, when its word is not known, or when the file cannot be read or breaks
/// off before it. Re-entrant.
ORVA_EXPORT KOV::SDK::Session loadSession(const QString &path);

/// The items of the sidecar at @p path by name: every element with an "Id" other than "Event" and "Session".
///
/// "CarSetup_" is taken out of the name. An item with a "Unit", be it empty, holds a double with that unit (0.0 where
/// the "Value" is no number); one without holds the text. Of two items with one name the later counts. A file that
/// cannot be read gives an empty map, one that breaks off the items before the break. Re-entrant.
ORVA_EXPORT QMap<QString, KOV::SDK::Value> loadValues(const QString &path);
