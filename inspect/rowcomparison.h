#pragma once

// Internal to the check of text exports: one pass over the rows, cell by cell against the samples that the import made
// of them. What it means: checktext.cpp.

#include "inspect/findinglist.h"
#include "inspect/lapcounter.h"
#include "inspect/textlog.h"

#include <QtCore/QHash>

#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace Inspect {

/// Cells of one kind that are amiss.
struct CellTally
{
    qint64 cells = 0;
    std::vector<bool> columns; ///< where there are any; as long as need be
    Place first;
    QString text; ///< of the first

    void add(const Cell &cell, std::size_t column, qint64 line)
    {
        if (cells++ == 0)
            setFirst(cell, column, line);
        if (columns.size() <= column)
            columns.resize(column + 1);
        columns[column] = true;
    }

private:
    void setFirst(const Cell &cell, std::size_t column, qint64 line);
};

/// The column "Time", in seconds.
struct ClockTally
{
    std::optional<double> first;
    std::optional<double> last;
    qint64 gaps = 0;  ///< steps of several rows, and falls
    qint64 falls = 0; ///< of these
    double skippedSeconds = 0.0;
    Place firstGap;
    double gapFrom = 0.0;
    double gapTo = 0.0;
};

/// Rows with more or fewer cells than there are titles.
struct UnevenTally
{
    qint64 rows = 0;
    qint64 longRows = 0; ///< of these
    qint64 firstLine = 0;
    std::size_t firstCells = 0;
    bool isLastShort = false; ///< of the rows read so far
};

/// The samples of all laps in the order of their rows.
class SampleWalk
{
public:
    /// @p names is the channel of each column, null for a column that the import does not keep.
    SampleWalk(const Laps &laps, QList<QString> names);

    /// Goes to the samples of the next row; false when there are no more.
    bool next();
    /// Whether the import read a 0.
    bool isZero(std::size_t column) const { return columns[column] && columns[column][index] == 0.0; }
    /// What it read; NaN where it read nothing.
    double at(std::size_t column) const;

private:
    const Laps &laps;
    QList<QString> names;
    std::vector<const double *> columns; // of the lap in hand
    qsizetype lapIndex = -1;
    long long index = 0;
    long long length = 0;
};

class RowComparison
{
public:
    /// @p laps is what the import made of the export at @p path; it outlives this.
    RowComparison(const QString &path, const Laps &laps);

    /// Compares the next row; false at the end of the file.
    bool takeRow();

    const TextPreamble &preamble() const { return log.preamble(); }
    /// The import keeps one row in so many.
    int stride() const { return rowStride; }
    /// Titles with their places.
    const std::vector<NamedPlace> &columns() const { return places; }
    /// The column that fills the channel which column @p column names: itself, or a later one of the same name.
    std::size_t keptColumn(std::size_t column) const
    {
        return columnOfName.value(names[static_cast<qsizetype>(column)]);
    }
    bool hasColumn(QLatin1String title) const;
    /// Duration of the rows read so far, by their clock or else by the sample rate.
    double seconds() const;

    // What was found so far.
    qint64 rows = 0;            ///< those in the preamble not counted
    qint64 keptRows = 0;        ///< one in stride() of them
    qint64 samples = 0;         ///< rows that the import read, over all laps
    qint64 rowsInPreamble = 0;  ///< see TextLog::isInPreamble
    qint64 firstInPreamble = 0; ///< line
    qint64 firstUnread = 0;     ///< line of the first row that the import did not read; 0 where it read all
    UnevenTally uneven;
    ClockTally clock;
    CellTally quotedPoint; ///< numbers in quotes with a point, read as 0
    CellTally notNumber;   ///< other cells read as 0 that do not say 0
    CellTally empty;       ///< empty cells read as 0
    CellTally shifted;     ///< the first cell of a row that the import splits at a comma
    /// Columns that mark laps.
    std::vector<std::pair<std::size_t, LapCounter>> lapCounters;

private:
    void watchColumns();
    void watchRow(std::span<const Cell> cells);
    void watchClock(std::optional<double> cell);
    void compareCells(std::span<const Cell> cells);
    void judgeZero(const Cell &cell, std::size_t column);

    TextLog log;
    int rowStride;
    std::vector<NamedPlace> places;
    QList<QString> names; // of the channels that the columns fill
    QHash<QString, std::size_t> columnOfName;
    std::optional<SampleWalk> walk;
    std::optional<std::size_t> timeColumn;
    std::optional<std::size_t> repairedColumn;
    double timeScale = 1.0; // to seconds
};

} // namespace Inspect
