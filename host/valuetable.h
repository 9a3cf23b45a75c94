#pragma once

// The samples of channels as comma-separated text.

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Host {

class Output;
struct Log;

/// The samples of the channels @p names, each a channel of the lap with the index @p lap: a header row with the names,
/// then a row for each sample, after RFC 4180 but with bare line feeds. Numbers read back exactly; a sample without a
/// value is an empty field.
void printValues(const Log &log, qsizetype lap, const QStringList &names, Output &output);

/// The header row of such text, with names in double quotes that hold a comma, a quote or a line break. Control
/// characters are replaced where the row goes to a terminal.
QString headerLine(const QStringList &names);

} // namespace Host
