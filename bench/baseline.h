#pragma once

// The loops that the readers are compared with. They do the minimum that has to be done, and read what orva-samples
// writes and nothing else.

#include "childrun.h"

#include <QtCore/QString>

#include <string_view>

namespace Baseline {

/// Reads a tidy export block by block, with one scalar loop that finds, converts and stores fields into per-lap
/// columns (push_back), and cuts laps where the distance falls. Returns the number of fields.
qint64 readCsv(const QString &path, Stopwatch *watch);

/// The same with QTextStream::readLine, QString::split and toDouble.
qint64 readCsvWithQt(const QString &path, Stopwatch *watch);

/// Finds the line ends of a file, block by block. Returns the number of lines.
qint64 walkLines(const QString &path, Stopwatch *watch);

/// Copies the samples of all channels of a .ld log from file to memory and widens them to double, as they are: no
/// conversion, no common rate, no laps. Returns the number of samples.
qint64 copyLd(const QString &path, Stopwatch *watch);

/// The value of an ASCII text of the form -?digits[.digits], digit by digit.
double toDouble(std::string_view text);

} // namespace Baseline
