#pragma once

// A data row of a text export: is it empty, and which numbers does it hold? The text rules: csvtext.h.

#include "csv/linereader.h"

#include <QtCore/QString>

#include <cstddef>
#include <span>
#include <string_view>

namespace Csv {

/// Whether nothing is left of @p line after processCsvString: it is empty, or an even number of quotes alone.
bool isEmptyRow(std::string_view line);

/// Reads the numbers of the row @p line into the front of @p values and returns how many fields it has, though at most
/// values.size(): fields behind that are not looked at. 0 for an empty row, else at least 1.
///
/// The result is readRowPlainly's. Rows as the exporting tools write them are read where they stand; a row with
/// anything unusual in its quotes, or that is not ASCII, goes the plain way. Allocates for those only.
std::size_t readRow(const LineReader &line, std::span<double> values);

/// The same by the plain way: processCsvString, a split at every comma, QString::toDouble.
std::size_t readRowPlainly(QString line, std::span<double> values);

} // namespace Csv
