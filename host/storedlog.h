#pragma once

// What the file of a log itself holds, whatever the import makes of it: its channels at their own rates. For logs
// without laps, and for people who want to see what the import leaves out.

#include "host/logformat.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Host {

class Output;

/// Whether there are any channels in the log at @p path. Throws Failure if it cannot be opened.
bool hasStoredChannels(const QString &path, LogFormat format);

/// Prints the channels in the log at @p path, all records of a .ld log and all columns of a text export, each with its
/// rate and range; as a table, or as one JSON object on a line of its own. Throws Failure.
void printStoredChannels(const QString &path, LogFormat format, bool isJson, Output &output);

/// Prints the samples of the channels @p names, or of all if there are no names.
///
/// A .ld log: rows with the time in s first, one for each instant at which one of the channels has a sample; the others
/// are empty there. A text export: its rows, with each cell read as the number that a person would see in it. As JSON
/// each channel has its own samples at its own rate. Throws Failure.
void printStoredValues(const QString &path, LogFormat format, const QStringList &names, bool isJson, Output &output);

} // namespace Host
