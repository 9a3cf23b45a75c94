#pragma once

// What the rewriting of a text export and that of a .ld log share: names of columns, driving channels, header rows.

#include "inspect/exportwriter.h"
#include "inspect/lapplan.h"
#include "inspect/rewrite.h"
#include "inspect/sidecar.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <array>
#include <string>
#include <vector>

namespace Inspect {

/// The four in the order in which they are written, before all other columns.
inline constexpr std::array drivingRoles{LapRole::Position, LapRole::LapNumber, LapRole::CurrentLapTime,
                                         LapRole::LastLapTime};

/// A position that falls by more than this begins a lap; nothing lies between two such samples.
inline constexpr double halfLapPercent = 50.0;

/// A column of the source and the name that it is written under.
struct WrittenColumn
{
    std::size_t source = 0;
    QString title;
    QString unit;
};

/// The columns to write after the driving channels and those of @p taken: all of @p titles but for channels of the
/// source that became a driving channel of the same name. The import keeps one of several columns whose names differ in
/// case, blanks and minus signs alone, so later ones get a number; a remark says so.
std::vector<WrittenColumn> writtenColumns(const QStringList &titles, const QStringList &units, const LapPlan &plan,
                                          const QStringList &taken, QStringList *remarks);

/// Titles, units and the lines around them.
void writeColumnRows(ExportWriter &writer, const LapPlan &plan, const QStringList &ownTitles,
                     const QStringList &ownUnits, const std::vector<WrittenColumn> &columns);

/// Says in @p summary where the driving channels come from.
void describeOrigins(const LapPlan &plan, RewriteSummary *summary);

/// A header row for the marks of @p plan; none where it has no laps.
void writeBeaconMarkers(ExportWriter &writer, const LapPlan &plan);

/// What is to be said of a row at @p time that closes the last lap, see LapPlan::closingTime.
QString closingRemark(double time);

/// The values of the driving channels that follow from the laps, as text. Those of a lap are made once.
class DrivingCells
{
public:
    explicit DrivingCells(LapPlan &lapPlan)
        : plan(lapPlan)
    {
    }
    void add(ExportWriter &writer, LapRole role, double time);

private:
    LapPlan &plan;
    double lastLapTime = 0.0;
    std::string lastLapTimeText{"0"};
};

/// Tells options.progress of the share that is done.
class Progress
{
public:
    Progress(const std::function<void(double)> &progressFunction, double beginShare, double endShare)
        : function(progressFunction)
        , begin(beginShare)
        , end(endShare)
    {
    }
    void tell(double share) const
    {
        if (function)
            function(begin + (end - begin) * share);
    }

private:
    const std::function<void(double)> &function;
    double begin;
    double end;
};

/// The marks of the sidecar.
LapMarks sidecarMarks(const Sidecar &sidecar);

/// What fills the files of one rewriting.
struct RewriteJob
{
    const RewriteOptions &options;
    const Sidecar &sidecar; ///< of the source
    BlockWriter &file;
    RewriteSummary &summary;
    QString sessionWord; ///< of the source's header or head, where the sidecar has none
};

} // namespace Inspect
