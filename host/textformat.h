#pragma once

// How single things are written for people: numbers, times, names. Rows of them: texttable.h. Numbers for programs:
// exactnumber.h.

#include <QtCore/QString>
#include <QtCore/QTime>

namespace Host {

/// @p value with six significant digits, for lists that people read.
QString roundedNumber(double value);

/// @p time as m:ss.mmm, the minutes growing past 59; "-" where it is not a lap's time (see hasLapTime in laps.h).
QString lapTimeText(QTime time);

/// @p text, or "-" where it is empty, so that a column is never blank.
QString orDash(const QString &text);

/// @p text with control characters, line breaks and direction marks replaced, so that a log can neither break or turn
/// round a line nor steer a terminal.
QString printable(QString text);

/// Number of terminal cells that @p text takes: none for a combining mark, two for a wide East Asian character.
qsizetype displayWidth(const QString &text);

} // namespace Host
