#pragma once

// Judges a log: compares what the import made of it with what is in the file. What is found: finding.h.

#include "inspect/finding.h"
#include "sdk/lap.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace Inspect {

using Laps = QList<QSharedPointer<KOV::SDK::Lap>>;

enum class LogKind
{
    Text,   ///< a text export
    Binary, ///< a .ld log
    Other   ///< neither
};

/// What was looked at, for a line above the findings.
struct CheckFacts
{
    LogKind kind = LogKind::Other;
    qsizetype channels = 0;  ///< columns of a text export, records of a .ld log
    qint64 rows = 0;         ///< of a text export
    double sampleRate = 0.0; ///< rows per second, 0 where the export does not say
    double seconds = 0.0;    ///< that the log lasts
    QString sidecar;         ///< path of the sidecar; empty where there is none
};

struct CheckResult
{
    CheckFacts facts;
    QList<Finding> findings; ///< the most important first; none where nothing is amiss
};

/// Checks the text export at @p path, from which the import made @p laps (none where it found none).
///
/// Reads the file once more, plainly, and compares it cell by cell with the samples. A file that is not an export gives
/// the one finding "not-a-log". Memory: a block of the file. Re-entrant; the laps are only read.
CheckResult checkText(const QString &path, const Laps &laps);

/// Checks the .ld log at @p path in the same way. Memory: one channel at a time.
CheckResult checkBinary(const QString &path, const Laps &laps);

/// Of a file that is neither: what it looks like.
CheckResult checkOther(const QString &path);

/// Why the laps of the text export at @p path look empty, in a few words that continue its name: "..., 12 of 13 columns
/// read as 0 because of their quotes". Empty where nothing strikes. Looks at the beginning of the file alone, so this
/// costs next to nothing, and the full check may find more.
QString remarkOnText(const QString &path, const Laps &laps);
/// The same of a .ld log.
QString remarkOnBinary(const QString &path, const Laps &laps);

} // namespace Inspect
