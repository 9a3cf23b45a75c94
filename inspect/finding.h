#pragma once

// What is amiss with a log, as data. The checks that find it: check.h. Each code has a heading in docs/check.md.

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <string_view>

namespace Inspect {

enum class Severity
{
    Error,  ///< data of the log is lost, or read as something else
    Warning ///< data is there but may not be what it seems
};

/// All codes, the most important first; findings are listed in this order.
enum class FindingCode
{
    NotALog,
    NoHeader,
    NoRecords,
    NoRows,
    QuotedPoint,
    RowsNotRead,
    ShiftedCells,
    NotANumber,
    RecordsDropped,
    NoLapChannel,
    NoLapsCut,
    NoLapMarks,
    ShortLaps,
    MissingChannel,
    LooksLike,
    ImplausibleCount,
    CutOff,
    UnevenRows,
    EmptyCells,
    Thinned,
    TimeGap,
    DuplicateName,
    ConstantChannel,
    BrokenSidecar,
    UnknownSession,
    ItemWithoutUnit,
    Count ///< of codes; not one itself
};

/// The code as people and scripts see it, such as "quoted-point". It never changes.
QLatin1String codeText(FindingCode code);
Severity severityOf(FindingCode code);

/// Where a finding begins. Lines, columns and records count from 1; 0 means none.
struct Place
{
    qint64 line = 0;
    qsizetype column = 0;
    qsizetype record = 0; ///< of a .ld log, in list order
    QString channel;      ///< as the log calls it
};

/// Each text is a sentence or two for people, in plain words, with quotations from the log unchanged.
struct Finding
{
    FindingCode code = FindingCode::NotALog;
    Place place;
    QString found;        ///< what is there
    QString read;         ///< what the import makes of it
    QString remedy;       ///< what to do about it
    qint64 count = 1;     ///< of cells, rows, records or whatever it is about
    QStringList channels; ///< that it is about, as the log calls them; empty where that is none or all
};

} // namespace Inspect
