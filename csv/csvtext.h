#pragma once

// Makes a data row safe to split at its commas.

#include "orva_export.h"

#include <QtCore/QString>

/// Takes the quotes off the numbers of a data row, in place: first every pair of adjacent quotes goes, then the quotes
/// around integers, then those around integers with a decimal comma, which becomes a point.
///
/// Knows nothing of fields; whatever else stands in quotes keeps them, a quoted number with a decimal point included,
/// and reads as 0.0 later. A line of an even number of quotes alone becomes empty. Thread-safe.
ORVA_EXPORT void processCsvString(QString &line);
