#pragma once

// The text rules of an export: how a title names a channel, and how a data row becomes safe to split at its commas.

#include "orva_export.h"

#include <QtCore/QString>

namespace Csv {

/// The name of the channel that the column @p title fills: in lower case, without blanks (U+0020) and minus signs.
inline QString valueName(QStringView title)
{
    return title.toString().toLower().remove(u' ').remove(u'-');
}

} // namespace Csv

/// Takes the quotes off the numbers of a data row, in place: first every pair of adjacent quotes goes, then the quotes
/// around integers, then those around integers with a decimal comma, which becomes a point.
///
/// Fields play no part in this. Any other quoted text keeps its quotes and so reads as 0.0 later, a number with a
/// decimal point included. A line of nothing but an even number of quotes becomes empty. Thread-safe.
ORVA_EXPORT void processCsvString(QString &line);
