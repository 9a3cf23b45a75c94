#pragma once

// What the operating systems do each in their own way.

#include <QtCore/QString>

namespace Host {

/// Prepares standard output and error. Fills the place of each stream that the caller has closed, so that no file
/// opened later takes it: the result would be written into that file. Writing to such a place fails.
void holdStandardStreams();

/// Makes a reader that goes away a write error like any other.
void ignoreBrokenPipes();

bool isOutputTerminal(); ///< whether standard output is a terminal
bool isErrorTerminal();  ///< whether standard error is one

/// Whether @p path cannot be looked at, as one of its folders may not be entered. Qt says of such a file that it does
/// not exist.
bool isInClosedFolder(const QString &path);

} // namespace Host
