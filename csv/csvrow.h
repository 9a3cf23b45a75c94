#pragma once

// A data row of a text export: is it empty, and which numbers does it hold? The text rules: csvtext.h.

#include "csv/fieldgroups.h"
#include "csv/linereader.h"

#include <QtCore/QString>

#include <cstddef>
#include <span>
#include <string_view>

namespace Csv {

/// Whether processCsvString leaves nothing of @p line: it is empty, or an even number of quotes and nothing else.
bool isEmptyRow(std::string_view line);

/// Reads the numbers of the row @p line into the front of @p values and returns the number of its fields, at most
/// values.size(): fields beyond that are not looked at. 0 for an empty row, otherwise at least 1.
///
/// The result is that of readRowPlainly. Rows as exporting tools write them take the fast path, which reads them in
/// place; a row with anything unusual in its quotes, or that is not ASCII, takes the reference path. Only that one
/// allocates. @p readGroups may be null.
std::size_t readRow(const LineReader &line, std::span<double> values, FieldGroupReader readGroups);

/// The reference path: processCsvString, a split at every comma, QString::toDouble.
std::size_t readRowPlainly(QString line, std::span<double> values);

} // namespace Csv
