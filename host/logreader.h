#pragma once

// From the path of a log to its laps, by the path that its content asks for.

#include "host/failure.h"
#include "host/laps.h"
#include "host/logformat.h"
#include "host/plugin.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Host {

struct Log
{
    QString path;
    Laps laps;            ///< at least one, and at least one of them has channels
    QStringList messages; ///< what the plug-in said meanwhile
    QStringList remarks;  ///< what is amiss though there are laps, each with the log's path
};

/// The import finds no laps in a log that could be read: there may be something else to see in it.
class NoLaps : public Failure
{
public:
    using Failure::Failure;
};

/// For a file that is no log of a known format.
Failure notALog(const QString &path);

/// What kind of log the file at @p path is. Throws Failure for what is not a regular file that can be read.
LogFormat readFormat(const QString &path);

/// Imports logs.
///
/// A text export goes through the plug-in, a binary log through the library's own function. Which of them it is matters
/// to the library's own plug-in only: another plug-in gets every file, as it knows best what it can read.
class LogReader
{
public:
    /// Loads the plug-in @p pluginPath; if it is empty, the library's own. Throws Failure.
    explicit LogReader(const QString &pluginPath);

    /// The log at @p path. Throws Failure; NoLaps if the library itself finds no laps in it.
    Log read(const QString &path) const;

private:
    Plugin plugin;
};

} // namespace Host
