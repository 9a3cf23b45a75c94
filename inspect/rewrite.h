#pragma once

// Writes a log anew, as a text export that the import reads in full. How its laps are found: lapplan.h. The text export
// as the source: rewriteexport.h; the .ld log: rewritelog.h. For people: docs/rewrite.md.

#include "inspect/lapplan.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace Inspect {

struct RewriteOptions
{
    QString sourcePath;
    QString targetPath;
    std::vector<LapMapping> mappings;
    std::optional<std::vector<double>> lapsAt; ///< seconds on the clock of the log, rising
    bool mayOverwrite = false;                 ///< what is at the target or at its sidecar's place
    std::function<void(double)> progress;      ///< called now and then with the share that is done, 0 to 1; may be null
};

/// What was written and why, for people.
struct RewriteSummary
{
    struct Origin
    {
        QString title; ///< of a driving channel
        QString unit;
        QString text; ///< where its values come from; empty where it is not written
    };
    QString source; ///< what the source is: "text export, quoted cells with a decimal point, 20 rows per second"
    QString rate;   ///< what was done to bring it to the written rate
    qint64 rows = 0;
    qsizetype channels = 0; ///< with the driving ones
    std::array<Origin, 4> origins;
    QString laps;        ///< where the laps come from; empty where nothing marks them
    QString sidecarPath; ///< empty where none was written
    qsizetype sidecarItems = 0;
    QStringList remarks; ///< what is not as it was in the source, or could not be had from it
};

/// The rows per second of what is written.
inline constexpr int rewriteRate = 60;

/// Writes the log at options.sourcePath, which is a binary .ld log if @p isBinary, to options.targetPath, and its
/// sidecar beside that.
///
/// Both files are written under other names in their folder and renamed when they are complete; on a failure nothing is
/// left. The source is read twice, with threads for reading and writing. Memory does not grow with it: some blocks of a
/// megabyte, and what marks laps. A .ld log is brought to the common rate in a temporary file beside the target. Throws
/// RewriteError. Re-entrant for different targets.
RewriteSummary rewriteLog(const RewriteOptions &options, bool isBinary);

} // namespace Inspect
