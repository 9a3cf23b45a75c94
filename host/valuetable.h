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

/// @p name as a field of such text: in double quotes where it holds a comma, a quote or a line break.
QString quotedIfNeeded(QString name);

} // namespace Host
