#pragma once

// What kind of log a file is, told by its content: names lie.

#include <QtCore/QByteArrayView>

namespace Host {

enum class LogFormat
{
    Text,   ///< a comma-separated export, or at least text
    Binary, ///< a .ld log
    Unknown ///< neither
};

/// How much of a file's beginning logFormatOf wants to see.
inline constexpr qint64 logFormatBytes = 1 << 16;

/// The kind of log that begins with @p head, the first logFormatBytes of a file of @p fileSize bytes, or all of it.
///
/// Generous, since exports come in many shapes: what starts with a byte order mark or contains next to no control
/// characters is text, in any encoding and whatever it says. Anything else is a .ld log if its head begins as one or
/// leads to a channel record inside the file.
LogFormat logFormatOf(QByteArrayView head, qint64 fileSize);

} // namespace Host
