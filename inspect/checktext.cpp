// The check of text exports: compares their cells with the samples that the import made of them.

#include "inspect/check.h"
#include "inspect/filelook.h"
#include "inspect/findinglist.h"
#include "inspect/rowcomparison.h"
#include "inspect/words.h"

#include "ld/ldx.h"

#include <QtCore/QFile>

#include <algorithm>

namespace Inspect {

namespace {

constexpr qsizetype rowsOfRemark = 100;
constexpr double longLap = 600.0; // seconds

class TextCheck
{
public:
    TextCheck(const QString &path, const Laps &laps)
        : path(path)
        , laps(laps)
        , comparison(path, laps)
        , head(comparison.preamble())
        , columns(comparison.columns())
    {
    }

    CheckResult run()
    {
        if (const FileLook look = lookOfFile(); !look.what.isEmpty() && columns.size() < 3)
            return notALog(look);
        while (comparison.takeRow()) {
        }
        if (head.columns.empty() && head.header.empty())
            return notALog({});
        judgeLayout();
        judgeCells();
        judgeColumns();
        sidecar = readSidecar(sidecarPath(path));
        if (comparison.samples > 0) {
            judgeLaps();
            judgeShortLaps();
        }
        judgeSidecar();
        CheckFacts facts{LogKind::Text,     std::ssize(columns),  comparison.rows,
                         head.sampleRate(), comparison.seconds(), {}};
        if (sidecar.exists)
            facts.sidecar = sidecarPath(path);
        return {facts, list.sorted()};
    }

    // What strikes in the first rows alone.
    QString remark()
    {
        for (qsizetype i = 0; i < rowsOfRemark && comparison.takeRow(); ++i) {
        }
        QStringList reasons;
        if (comparison.quotedPoint.cells > 0)
            reasons.append(QStringLiteral("fields read as zero because of their quotes: %1 in line %2")
                               .arg(quoted(comparison.quotedPoint.text))
                               .arg(comparison.quotedPoint.first.line));
        QStringList missing;
        for (const DrivingChannel &channel : drivingChannels()) {
            if (!comparison.hasColumn(channel.title))
                missing.append(QString(channel.title));
        }
        if (missing.size() == std::ssize(drivingChannels()))
            reasons.append(QStringLiteral("none of the channels that laps come from"));
        else if (!missing.isEmpty())
            reasons.append(QStringLiteral("no channel %1").arg(listOf(missing)));
        const double lasts = head.sampleRate() > 0.0
                                 ? static_cast<double>(comparison.samples * comparison.stride()) / head.sampleRate()
                                 : 0.0;
        if (laps.size() == 1 && lasts > longLap)
            reasons.append(QStringLiteral("one lap of %1").arg(durationText(lasts)));
        if (const qint64 count = shortLapCount(laps, keptRate()); count > 0)
            reasons.append(shortLapsText(count, laps));
        return reasons.join(QLatin1String("; "));
    }

private:
    // Rows per second that the import keeps; 0 where it is not known.
    double keptRate() const { return head.sampleRate() / comparison.stride(); }

    FileLook lookOfFile() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? lookOf(file.read(fileLookBytes)) : FileLook();
    }

    CheckResult notALog(const FileLook &look)
    {
        Finding &finding = list.add(FindingCode::NotALog);
        const bool isKnown = !look.what.isEmpty();
        finding.found = isKnown ? QStringLiteral("The file is %1.").arg(look.what)
                                : QStringLiteral("The file is a text without rows of cells between commas.");
        finding.read = QStringLiteral("Nothing is read, as it is neither a text export nor a binary .ld log.");
        finding.remedy = isKnown ? look.remedy : QStringLiteral("Pick the log itself, or export it again as CSV.");
        return {{}, list.sorted()};
    }

    QStringList titles(const CellTally &tally) const
    {
        QStringList names;
        for (std::size_t i = 0; i < tally.columns.size(); ++i) {
            if (tally.columns[i])
                names.append(columns[i].name);
        }
        return names;
    }

    // Adds what was found of @p tally.
    Finding &addTally(FindingCode code, const CellTally &tally)
    {
        Finding &finding = list.add(code, tally.first);
        finding.place.channel = columns[static_cast<std::size_t>(tally.first.column) - 1].name;
        finding.count = tally.cells;
        finding.channels = titles(tally);
        return finding;
    }
    // "There are 11 such cells, in 3 of 4 columns: ...", where @p kind is "such".
    QString spread(const Finding &finding, const QString &kind) const
    {
        return QStringLiteral("There %1 %2, in %3 of %4 columns: %5.")
            .arg(finding.count == 1 ? QStringLiteral("is") : QStringLiteral("are"),
                 counted(finding.count, kind + QStringLiteral(" cell")))
            .arg(finding.channels.size())
            .arg(columns.size())
            .arg(listOf(finding.channels));
    }

    void judgeLayout()
    {
        const qint64 lostRows = comparison.rows + comparison.rowsInPreamble;
        if (head.isWithoutEmptyLine || (head.headerEndLine == 0 && comparison.samples == 0)) {
            Finding &finding = list.add(FindingCode::NoHeader, {head.titlesLine, 0, 0, {}});
            finding.found =
                head.isWithoutEmptyLine
                    ? QStringLiteral("No empty line separates the header block from the channel names in line %1.")
                          .arg(head.titlesLine)
                    : QStringLiteral("No empty line ends the header block, and no channel names follow.");
            finding.read = QStringLiteral("The import takes every line for a header row and finds no channels.");
            finding.remedy =
                head.isWithoutEmptyLine
                    ? QStringLiteral("Put an empty line before the channel names and another after the units, or run "
                                     "\"orva-host rewrite\" on the file.")
                    : QStringLiteral("Export the log again, with channel names, units and rows.");
        } else if (head.header.empty()) {
            Finding &finding = list.add(FindingCode::NoHeader, {1, 0, 0, {}});
            finding.found = QStringLiteral("The file has no header rows before its channel names.");
            finding.read = QStringLiteral("Venue, vehicle, driver and sample rate stay unknown.");
            finding.remedy = QStringLiteral("Export the log with its header.");
        }
        if (comparison.samples == 0 && lostRows == 0 && !list.contains(FindingCode::NoHeader)) {
            Finding &finding = list.add(FindingCode::NoRows, {head.titlesLine, 0, 0, {}});
            finding.found = head.titlesLine > 0
                                ? QStringLiteral("No rows follow the channel names in line %1.").arg(head.titlesLine)
                                : QStringLiteral("The file ends after its header rows.");
            finding.read = QStringLiteral("The import finds no samples.");
            finding.remedy = QStringLiteral("Export the log again; the export was cut off, or its range was empty.");
        }
        if (comparison.rowsInPreamble > 0 && !head.isWithoutEmptyLine) {
            Finding &finding = list.add(FindingCode::RowsNotRead, {comparison.firstInPreamble, 0, 0, {}});
            finding.count = comparison.rowsInPreamble;
            finding.found = QStringLiteral("Line %1 is a row of numbers, where the units or an empty line belong.")
                                .arg(comparison.firstInPreamble);
            finding.read =
                QStringLiteral("The import drops %1.").arg(counted(comparison.rowsInPreamble, QStringLiteral("row")));
            finding.remedy = QStringLiteral("Put the units and an empty line between the channel names and the rows.");
        }
        if (comparison.firstUnread != 0 && !list.contains(FindingCode::NoHeader)) {
            Finding &finding = list.add(FindingCode::RowsNotRead, {comparison.firstUnread, 0, 0, {}});
            finding.count = comparison.keptRows - comparison.samples;
            finding.found = QStringLiteral("The file has %1.").arg(counted(comparison.keptRows, QStringLiteral("row")));
            finding.read =
                QStringLiteral(
                    "%1 of them were read; the import stopped at line %2, where its limit for rows of uneven "
                    "length or for very short laps was reached.")
                    .arg(comparison.samples)
                    .arg(comparison.firstUnread);
            finding.remedy = QStringLiteral("Run \"orva-host rewrite\" on the file, or export fewer columns.");
        }
        if (comparison.stride() > 1 && comparison.rows > 0) {
            const HeaderEntry *rate = head.find(u"Sample Rate");
            Finding &finding = list.add(FindingCode::Thinned, {rate->line, rate->column + 2, 0, {}});
            finding.count = comparison.rows - comparison.keptRows;
            finding.found = QStringLiteral("The sample rate is %1 per second: %2.")
                                .arg(quoted(rate->value), counted(comparison.rows, QStringLiteral("row")));
            finding.read = QStringLiteral("Every sixth row is read, which makes 60 per second; %1 are skipped.")
                               .arg(counted(finding.count, QStringLiteral("row")));
            finding.remedy = QStringLiteral("Nothing, if 60 per second will do. Otherwise export at another rate.");
        }
        judgeUnevenRows();
        judgeTime();
    }

    void judgeUnevenRows()
    {
        const UnevenTally &uneven = comparison.uneven;
        if (uneven.rows == 0 || columns.empty() || head.isWithoutEmptyLine)
            return;
        Finding &finding = list.add(FindingCode::UnevenRows, {uneven.firstLine, 0, 0, {}});
        finding.count = uneven.rows;
        if (uneven.rows == 1 && uneven.isLastShort) {
            finding.found = QStringLiteral("The last row, line %1, breaks off after %2 of %3 cells.")
                                .arg(uneven.firstLine)
                                .arg(uneven.firstCells)
                                .arg(columns.size());
            finding.read = QStringLiteral("The channels that it lacks have no value there.");
            finding.remedy =
                QStringLiteral("Nothing, unless the export should be longer: then copy or export it again.");
            return;
        }
        finding.found =
            QStringLiteral("%1 not have as many cells as there are channel names (%2); the first, in line %3, has %4.")
                .arg(uneven.rows == 1 ? QStringLiteral("1 row does")
                                      : counted(uneven.rows, QStringLiteral("row")) + QLatin1String(" do"))
                .arg(columns.size())
                .arg(uneven.firstLine)
                .arg(uneven.firstCells);
        finding.read =
            uneven.longRows == uneven.rows ? QStringLiteral("Cells beyond the last channel name are dropped.")
            : uneven.longRows == 0         ? QStringLiteral("The channels that a row lacks have no value there.")
                                   : QStringLiteral("Missing cells have no value; cells beyond the last channel name "
                                                    "are dropped.");
        finding.remedy =
            uneven.longRows > 0
                ? QStringLiteral("Look for decimal commas without quotes, which split a number in two, and "
                                 "export again.")
                : QStringLiteral("Nothing, if these channels end early, as they may after \"orva-host rewrite\". "
                                 "Otherwise export the log again.");
    }

    void judgeTime()
    {
        const ClockTally &clock = comparison.clock;
        if (clock.gaps == 0)
            return;
        Finding &finding = list.add(FindingCode::TimeGap, clock.firstGap);
        finding.count = clock.gaps;
        finding.found = QStringLiteral("The clock %1 from %2 s to %3 s at line %4")
                            .arg(clock.gapTo < clock.gapFrom ? QStringLiteral("goes back") : QStringLiteral("jumps"))
                            .arg(clock.gapFrom, 0, 'f', 3)
                            .arg(clock.gapTo, 0, 'f', 3)
                            .arg(clock.firstGap.line);
        finding.found +=
            clock.gaps == 1 ? QStringLiteral(".")
                            : QStringLiteral(", and at %1 more.").arg(counted(clock.gaps - 1, QStringLiteral("place")));
        finding.read = clock.falls == clock.gaps
                           ? QStringLiteral("The import joins the rows as if the clock ran on.")
                           : QStringLiteral("The import joins the rows as if no time were missing; in all, %1 are.")
                                 .arg(durationText(clock.skippedSeconds));
        finding.remedy = QStringLiteral("Export one outing at a time. Do not trust lap times across the gap.");
    }

    void judgeCells()
    {
        if (comparison.quotedPoint.cells > 0) {
            Finding &finding = addTally(FindingCode::QuotedPoint, comparison.quotedPoint);
            const QString withComma = QString(comparison.quotedPoint.text).replace(u'.', u',');
            finding.found = QStringLiteral("%1 is in quotes with a decimal point. %2")
                                .arg(quoted(comparison.quotedPoint.text), spread(finding, QStringLiteral("such")));
            finding.read = QStringLiteral("Each is read as 0: a number in quotes needs a decimal comma, as in %1.")
                               .arg(quoted(withComma));
            finding.remedy =
                QStringLiteral("Export with decimal commas, or without quotes, or run \"orva-host rewrite\" on the "
                               "file.");
        }
        if (comparison.shifted.cells > 0) {
            Finding &finding = addTally(FindingCode::ShiftedCells, comparison.shifted);
            finding.found =
                QStringLiteral(
                    "%1 has a comma inside its quotes that is not a decimal comma. There are such cells in %2.")
                    .arg(quoted(comparison.shifted.text), counted(comparison.shifted.cells, QStringLiteral("row")));
            finding.read = QStringLiteral(
                "The import splits the cell at the comma, which moves all cells after it one column on.");
            finding.remedy =
                QStringLiteral("Leave the column out of the export, or run \"orva-host rewrite\" on the file.");
        }
        if (comparison.notNumber.cells > 0) {
            Finding &finding = addTally(FindingCode::NotANumber, comparison.notNumber);
            finding.found = QStringLiteral("%1 is not a number to the import. %2")
                                .arg(quoted(comparison.notNumber.text), spread(finding, QStringLiteral("such")));
            finding.read = QStringLiteral("Each is read as 0.");
            finding.remedy = QStringLiteral("Leave texts out of the export, or give them as numbers.");
        }
        if (comparison.empty.cells > 0) {
            Finding &finding = addTally(FindingCode::EmptyCells, comparison.empty);
            finding.found = spread(finding, QStringLiteral("empty"));
            finding.read = QStringLiteral("Each is read as 0, not as missing.");
            finding.remedy =
                QStringLiteral("Do not rely on a 0 in these columns, or export them at the rate of the rows.");
        }
    }

    void judgeColumns()
    {
        if (columns.empty())
            return;
        for (const DrivingChannel &channel : drivingChannels()) {
            if (comparison.hasColumn(channel.title))
                continue;
            Finding &finding = list.add(FindingCode::MissingChannel, {head.titlesLine, 0, 0, QString(channel.title)});
            finding.channels = {QString(channel.title)};
            finding.found = QStringLiteral("No column is called %1.").arg(quoted(QString(channel.title)));
            finding.read = QStringLiteral("Without it %1.").arg(channel.textAbsence);
            const NamedPlace *candidate = lookalike(channel.role, columns);
            finding.remedy = candidate ? QStringLiteral("See \"looks-like\" below.") : missingRemedy();
            if (!candidate)
                continue;
            Finding &like = list.add(FindingCode::LooksLike, candidate->place);
            like.channels = {candidate->name, QString(channel.title)};
            like.found = QStringLiteral("%1 in column %2 probably holds what %3 should.")
                             .arg(quoted(candidate->name))
                             .arg(candidate->place.column)
                             .arg(quoted(QString(channel.title)));
            like.read = QStringLiteral("The import treats it like any other channel.");
            like.remedy = QStringLiteral("Run \"orva-host rewrite\" on the file, which uses it instead.");
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::size_t kept = comparison.keptColumn(i);
            if (kept != i)
                list.addDuplicate(columns[kept], columns[i]);
        }
        QStringList except{valueName(QString(drivingChannel(LapRole::Position).title))};
        if (comparison.hasColumn(drivingChannel(LapRole::Position).title))
            except.clear();
        for (const CellTally *tally : {&comparison.quotedPoint, &comparison.notNumber, &comparison.empty}) {
            for (const QString &title : titles(*tally))
                except.append(valueName(title));
        }
        if (comparison.shifted.cells == 0) // else channels hold what belongs to others
            list.addConstantChannels(laps, except);
    }

    // In the order of preference of a rewriting.
    void judgeLaps()
    {
        std::vector<LapEvidence> evidence;
        const auto addChannels = [&](LapRole role) {
            for (const auto &[column, counter] : comparison.lapCounters) {
                if (otherName(columns[column].name)->role == role)
                    evidence.push_back({columns[column].place,
                                        QStringLiteral("%1 in column %2 restarts or counts up at each lap")
                                            .arg(quoted(columns[column].name))
                                            .arg(column + 1),
                                        counter.laps()});
            }
        };
        const auto addMarks = [&](const Place &place, const QString &text, const std::vector<double> &marks) {
            const double period = head.sampleRate() > 0.0 ? 1.0 / head.sampleRate() : 0.0;
            const double begin = comparison.clock.first.value_or(0.0) + 0.5 * period;
            const double end = begin + comparison.seconds() + period; // also just after the last row
            const qint64 count =
                std::count_if(marks.begin(), marks.end(), [=](double mark) { return mark > begin && mark <= end; });
            evidence.push_back({place, text.arg(counted(count, QStringLiteral("lap mark"))), count + 1});
        };
        addChannels(LapRole::Position);
        if (const HeaderEntry *entry = head.find(u"Beacon Markers"))
            addMarks({entry->line, entry->column + 2, 0, {}}, QStringLiteral("The header has %1 (\"Beacon Markers\")"),
                     head.beaconMarkers);
        addMarks({}, QStringLiteral("The sidecar has %1"), sidecar.beacons());
        for (const LapRole role : {LapRole::Beacon, LapRole::LapNumber, LapRole::LapDistance, LapRole::CurrentLapTime})
            addChannels(role);
        list.addUncutLaps(evidence, laps, comparison.seconds());
    }

    void judgeShortLaps()
    {
        const QString wanted = valueName(QString(drivingChannel(LapRole::Position).title));
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (valueName(columns[i].name) == wanted && comparison.keptColumn(i) == i)
                list.addShortLaps(laps, keptRate(), columns[i].place,
                                  QStringLiteral("%1 falls several times where a lap begins, and the import begins a "
                                                 "lap at each fall.")
                                      .arg(quoted(columns[i].name)));
        }
    }

    void judgeSidecar()
    {
        list.addSidecar(sidecarPath(path), sidecar);
        if (sidecar.sessionWord && getSessionFromString(*sidecar.sessionWord) == KOV::SDK::Session::UnknownSession) {
            Finding &finding = list.add(FindingCode::UnknownSession);
            finding.found = QStringLiteral("The sidecar calls the session %1.").arg(quoted(*sidecar.sessionWord));
            finding.read = QStringLiteral("The session stays unknown.");
            finding.remedy = QStringLiteral("Known are Race, Offline testing, Test, Qualify, Practice and Warmup.");
        }
    }

    QString path;
    const Laps &laps;
    RowComparison comparison;
    const TextPreamble &head;
    const std::vector<NamedPlace> &columns;
    FindingList list;
    Sidecar sidecar;
};

} // namespace

CheckResult checkText(const QString &path, const Laps &laps)
{
    return TextCheck(path, laps).run();
}

QString remarkOnText(const QString &path, const Laps &laps)
{
    return TextCheck(path, laps).remark();
}

} // namespace Inspect
