#pragma once

// The logs to read: orva-samples makes them on first use, and they are kept.

#include <QtCore/QString>
#include <QtCore/QStringList>

/// Where logs are kept: the environment variable ORVA_BENCH_CACHE, or .cache/bench in the project.
QString cacheFolder();

/// The size of a log in megabytes (10^6 bytes): the environment variable ORVA_BENCH_MB, or 100.
int logMegabytes();

/// Path of the log "NAME-SIZEMB.SUFFIX", made with @p options if it is not there. Ends the program when that fails.
QString cachedLog(const QString &name, const QStringList &options, int megabytes,
                  const QString &suffix = QStringLiteral("csv"));

/// A copy of the text log at @p path whose distance has another name, so that all of it is one lap.
QString cachedSingleLap(const QString &path);
