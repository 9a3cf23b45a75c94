#pragma once

// Phrases that findings are made of.

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Inspect {

/// @p text in double quotes, shortened where it is long.
QString quoted(const QString &text);

/// The first few of @p names in double quotes, and how many more there are.
QString listOf(const QStringList &names);

/// "1 row", "12,345 rows".
QString counted(qint64 count, const QString &singular, const QString &plural);
/// The plural by an "s".
QString counted(qint64 count, const QString &singular);

/// "12.3 s", "4 min 5 s".
QString durationText(double seconds);

} // namespace Inspect
