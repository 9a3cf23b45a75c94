#pragma once

// What a page shows of its laps, as numbers: traces on one grid, the differences to the best lap, the driven line, and
// what is said about them. page.h makes HTML of it.

#include "host/laps.h"
#include "inspect/trackmap.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <vector>

namespace Host {

struct Log;

/// What the user asks of a page.
struct PageWishes
{
    std::vector<qsizetype> laps; ///< indices in each log; none: all
    QStringList traces;          ///< channel names; none: the usual ones
};

struct PageAxis
{
    QString name;
    QString unit; ///< "m", "%" or "s"
    double length = 0.0;
    int digits = 0; ///< after the point
};

struct PageTrace
{
    QString name;
    QString unit;
    QString source;         ///< names of the channels, where name is another
    int digits = 0;         ///< the last digit that is kept: 1 for tenths, -1 for tens
    int shownDigits = 6;    ///< at most, of a number in words
    bool isStepped = false; ///< values stay until the next one
    bool isSigned = false;  ///< a difference, with its sign
};

struct PageLap
{
    qsizetype log = 0;
    qsizetype index = 0;
    QString name; ///< unlike that of any other lap of the page
    bool isBest = false;
    bool isFinished = false;                 ///< from line to line: completed, and not an out lap
    bool isFastest = false;                  ///< shown by the button for the fastest laps
    bool isDrawn = false;                    ///< it can be laid along the axis
    bool isShown = false;                    ///< at first
    std::optional<int> behindMs;             ///< of its lap time to that of the best lap
    std::vector<std::vector<double>> values; ///< per trace; NaN where there is no value, empty without any
};

struct PageTrack
{
    std::size_t lap = 0; ///< whose line it is, in PageModel::laps
    std::vector<Inspect::TrackPoint> points;
    std::vector<double> speeds; ///< empty where they are not known
    QString speedUnit;
    bool beginsAtLine = false; ///< the first point lies on the line
};

struct PageModel
{
    PageAxis axis;
    int points = 0; ///< of the grid
    std::vector<PageTrace> traces;
    std::vector<PageLap> laps;
    std::optional<PageTrack> track;
    QStringList notes; ///< sentences about what the page had to assume
};

/// What the log with index @p log is called on a page of several: A to Z, AA and so on.
QString logLetter(qsizetype log);

/// Brings the laps of @p logs to one grid. Throws Failure where a log has no such lap, none has such a
/// channel, or there are more than 1,000 laps.
PageModel pageModel(const std::vector<Log> &logs, const PageWishes &wishes);

} // namespace Host
