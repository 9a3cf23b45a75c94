#pragma once

// Writes a drive as comma-separated text, tidy or the way the exporting tools write it.

#include "channels.h"
#include "drive.h"
#include "loginfo.h"

#include "inspect/blockwriter.h"

namespace samples {

enum class CsvStyle
{
    Plain, ///< bare numbers with decimal points, LF, one empty line after the header and after the units
    Tools, ///< every cell quoted, decimal commas, CR LF, two empty lines after the header and after the units
    Points ///< like Tools, with decimal points
};

/// The logger's channels as @p count columns, or as many as the car has if that is 0. In the quoted styles the last one
/// is a second "Time", in minutes, and "Gear" has the unit "..", as the tools have it.
std::vector<Channel> csvColumns(quint64 seed, int count, CsvStyle style);

/// Writes the head and all samples of @p drive at @p rate per second, or as many of them as @p file takes.
void writeCsv(Inspect::BlockWriter &file, Drive &drive, const std::vector<Channel> &columns, const LogInfo &info,
              int rate, CsvStyle style);

/// How many rows make a file of about @p sizeBytes, judged by the first rows of @p drive.
qint64 csvRowsForSize(Drive &drive, const std::vector<Channel> &columns, int rate, CsvStyle style, qint64 sizeBytes);

} // namespace samples
