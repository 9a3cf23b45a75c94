#include "inspect/rewriteexport.h"

#include "inspect/exportcells.h"
#include "inspect/rewriteerror.h"
#include "inspect/rowsahead.h"
#include "inspect/signalnames.h"
#include "inspect/textlog.h"
#include "inspect/words.h"
#include "ld/ldx.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <span>

namespace Inspect {

namespace {

constexpr std::size_t triedRows = 600; // judged before the two readings
constexpr double lowestRate = 0.1;     // rows per second; fewer make a small file a huge one
constexpr double nearRate = 0.005;     // of a rate: closer rates are the same
constexpr double ratesDiffer = 0.02;   // of a rate: the header's and that of the rows
constexpr double longestStep = 1.5;    // of the time between two rows; a longer one is a gap
constexpr double sameInstant = 1e-6;   // s
constexpr int timeDecimals = 6;
constexpr int positionDecimals = 8; // of a position in percent that is scaled or interpolated

std::optional<double> numberOf(std::span<const Cell> cells, std::size_t column)
{
    if (column >= cells.size())
        return std::nullopt;
    const auto number = numberIn(cells[column]);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

QString rateText(double rate)
{
    const double rounded = std::round(rate * 1000.0) / 1000.0;
    return QStringLiteral("%1 %2 per second")
        .arg(rounded)
        .arg(rounded == 1.0 ? QStringLiteral("row") : QStringLiteral("rows"));
}

// When each row was recorded. Rows come at even times: what a time column says is rounded, so it only shows where they
// begin and where they pause.
class RowClock
{
public:
    RowClock(double rowsPerSecond, double firstTime)
        : rate(rowsPerSecond)
        , base(firstTime)
    {
    }

    /// The time of the next row, which says @p said in its time column.
    double next(std::optional<double> said)
    {
        const double expected = base + static_cast<double>(index) / rate;
        const double step = !said ? 0.0 : hasSaid ? *said - lastSaid : *said - expected;
        isGap = step > (longestStep + static_cast<double>(silentRows)) / rate;
        const bool isBeforeLast = said && count > 0 && *said < expected - 1.5 / rate;
        falling = falling || step < -0.5 / rate || isBeforeLast;
        gapCount += isGap ? 1 : 0;
        if (said) {
            if (!hasSaid || std::abs(*said - expected) > 0.5 / rate) {
                base = *said;
                index = 0;
            }
            lastSaid = *said;
            hasSaid = true;
        }
        silentRows = said ? 0 : silentRows + 1;
        const double time = base + static_cast<double>(index) / rate;
        ++index;
        ++count;
        return time;
    }

    /// Whether the last row is the first, or the first after a gap.
    bool beginsStretch() const { return count == 1 || isGap; }
    bool falls() const { return falling; }
    qint64 gaps() const { return gapCount; }

private:
    double rate;
    double base;
    qint64 index = 0; // of the row, since base
    qint64 count = 0;
    double lastSaid = 0.0; // by the time column
    bool hasSaid = false;
    qint64 silentRows = 0; // since then
    bool isGap = false;
    bool falling = false;
    qint64 gapCount = 0;
};

// What the time column says of one row.
struct TimedRow
{
    double row;
    double time;
};

// What the first rows show.
struct Shape
{
    bool isQuoted = false;
    bool hasDecimalComma = false;
    std::size_t timedRows = 0;
    double timeStep = 0.0; // between two rows, by the time column; 0 where that does not tell
    std::optional<TimedRow> firstTime;
    std::vector<bool> hasValue; // of each column
};

class ExportRewriter
{
public:
    explicit ExportRewriter(RewriteJob &rewriteJob)
        : job(rewriteJob)
        , writer(job.file, ExportShape())
        , copier(writer)
    {
    }

    void run()
    {
        readShape();
        chooseRate();
        std::optional<LapClues> clues = survey();
        if (!clues) { // the time column falls: rows are counted instead
            if (headerRate <= 0.0)
                throw RewriteError(
                    QStringLiteral("its \"Time\" goes back, and it has no \"Sample Rate\" to time its rows by"));
            job.summary.remarks.append(QStringLiteral("\"Time\" goes back; rows are timed by \"Sample Rate\" instead"));
            hasClock = false;
            rate = headerRate;
            chooseWay();
            clues = survey();
        }
        LapPlan plan(std::move(*clues));
        write(plan);
        describe();
        describeOrigins(plan, &job.summary);
    }

private:
    template <typename Log>
    static void requireOpen(const Log &log)
    {
        if (!log.isOpen())
            throw RewriteError(QStringLiteral("cannot be opened (%1)").arg(log.errorString()));
    }

    void readShape()
    {
        TextLog log(job.options.sourcePath);
        requireOpen(log);
        preamble = log.preamble();
        for (const TextColumn &column : log.columns()) {
            titles.append(column.title);
            units.append(column.unit);
        }
        for (qsizetype i = 0; i < titles.size() && timeScale == 0.0; ++i) {
            const OtherName *other = otherName(titles[i]);
            if (!other || other->role != LapRole::Time)
                continue;
            timeColumn = static_cast<std::size_t>(i);
            timeScale = unitFactor(units[i], u"s").value_or(1.0);
        }

        shape.hasValue.resize(static_cast<std::size_t>(titles.size()));
        std::vector<TimedRow> times;
        std::size_t rows = 0;
        while (rows < triedRows && log.nextRow()) {
            ++rows;
            const auto cells = log.cells();
            for (std::size_t i = 0; i < cells.size(); ++i) {
                shape.isQuoted = shape.isQuoted || cells[i].isQuoted;
                shape.hasDecimalComma = shape.hasDecimalComma || cells[i].text.find(',') != std::string_view::npos;
                if (i < shape.hasValue.size() && !cells[i].text.empty())
                    shape.hasValue[i] = true;
            }
            if (const auto time = timeScale > 0.0 ? numberOf(cells, timeColumn) : std::nullopt)
                times.push_back({static_cast<double>(rows), *time * timeScale});
        }
        if (rows == 0)
            throw RewriteError(QStringLiteral("no data rows; expected a header, channel names, units and rows"));
        // Columns without a title and a value come from a comma at the end of the lines.
        while (!titles.isEmpty() && titles.last().isEmpty() &&
               !shape.hasValue[static_cast<std::size_t>(titles.size() - 1)]) {
            titles.removeLast();
            units.removeLast();
        }
        if (titles.isEmpty())
            throw RewriteError(QStringLiteral("no channel names before its rows"));
        shape.timedRows = times.size();
        if (!times.empty())
            shape.firstTime = times.front();
        shape.timeStep = usualStep(times);
    }

    // The mean of those steps from row to row that are not gaps. Single ones are rounded: 0.017 and 0.016 at 60 per
    // second.
    static double usualStep(const std::vector<TimedRow> &times)
    {
        std::vector<double> steps;
        for (std::size_t i = 1; i < times.size(); ++i)
            steps.push_back((times[i].time - times[i - 1].time) / (times[i].row - times[i - 1].row));
        if (steps.empty())
            return 0.0;
        std::vector<double> sorted = steps;
        std::sort(sorted.begin(), sorted.end());
        const double usual = sorted[sorted.size() / 2];
        double sum = 0.0;
        qint64 count = 0;
        for (const double step : steps) {
            if (step > 0.0 && step <= longestStep * usual) {
                sum += step;
                ++count;
            }
        }
        return count > 0 ? sum / static_cast<double>(count) : 0.0;
    }

    void chooseRate()
    {
        headerRate = preamble.sampleRate();
        rate = headerRate;
        hasClock = timeScale > 0.0;
        const double timed = shape.timeStep > 0.0 ? 1.0 / shape.timeStep : 0.0;
        if (timed > 0.0 && (rate <= 0.0 || std::abs(timed - rate) > ratesDiffer * rate)) {
            if (rate > 0.0)
                job.summary.remarks.append(
                    QStringLiteral("\"Sample Rate\" is %1, but \"Time\" rises by %2 s per row; the time is used")
                        .arg(rate)
                        .arg(shape.timeStep, 0, 'g', 4));
            rate = std::abs(timed - std::round(timed)) <= nearRate * timed ? std::round(timed) : timed;
        }
        if (rate <= 0.0)
            throw RewriteError(
                QStringLiteral("it has neither a column \"Time\" nor a \"Sample Rate\" to time its rows by"));
        if (rate < lowestRate)
            throw RewriteError(QStringLiteral("its rows come %1 s apart, expected at most %2 s")
                                   .arg(1.0 / rate, 0, 'g', 4)
                                   .arg(1.0 / lowestRate));
        if (timed == 0.0 && shape.timedRows != 1)
            hasClock = false; // it does not move
        chooseWay();
    }

    void chooseWay()
    {
        areRowsKept = std::abs(rate - rewriteRate) <= nearRate * rewriteRate;
        if (areRowsKept)
            rate = rewriteRate;
    }

    // The first row need not say its time.
    RowClock startedClock() const
    {
        return RowClock(rate, hasClock && shape.firstTime ? shape.firstTime->time - (shape.firstTime->row - 1.0) / rate
                                                          : 0.0);
    }

    std::optional<double> saidTime(std::span<const Cell> cells) const
    {
        const auto time = hasClock ? numberOf(cells, timeColumn) : std::nullopt;
        return time ? std::optional(*time * timeScale) : std::nullopt;
    }

    // The first reading; nothing where the time column turns out to be no clock.
    std::optional<LapClues> survey()
    {
        LapClues clues;
        std::vector<LapChannelSurvey> &channels = clues.channels;
        for (const LapChannel &channel : lapChannels(titles, units, job.options.mappings)) {
            if (channel.role != LapRole::Time)
                channels.emplace_back(channel);
        }
        const Progress progress(job.options.progress, 0.0, 0.3);
        RowsAhead rows(job.options.sourcePath);
        requireOpen(rows);
        RowClock clock = startedClock();
        // A row counts once the next one is there: the last one may break off.
        std::optional<double> said;
        std::vector<double> numbers(channels.size());
        std::size_t cellCount = 0;
        bool isBrokenOff = false;
        const auto count = [&] {
            const double time = clock.next(said);
            for (std::size_t i = 0; i < channels.size(); ++i)
                channels[i].add(time, numbers[i]);
            if (rowCount == 0)
                clues.firstTime = time;
            clues.lastTime = time;
            ++rowCount;
        };
        rowCount = 0;
        while (rows.next()) {
            if (cellCount > 0)
                count();
            if (clock.falls())
                return std::nullopt;
            const auto cells = rows.row().cells;
            said = saidTime(cells);
            for (std::size_t i = 0; i < channels.size(); ++i)
                numbers[i] =
                    numberOf(cells, channels[i].channel().column).value_or(std::numeric_limits<double>::quiet_NaN());
            isBrokenOff = cells.size() < std::min(cellCount, static_cast<std::size_t>(titles.size()));
            cellCount = cells.size();
            if (rowCount % progressRows == 0)
                progress.tell(static_cast<double>(rows.row().offset) / static_cast<double>(rows.fileBytes()));
        }
        if (cellCount == 0)
            throw RewriteError(QStringLiteral("can no longer be read"));
        if (isBrokenOff)
            job.summary.remarks.append(QStringLiteral("the last row breaks off and is left out"));
        else
            count();
        if (clock.falls())
            return std::nullopt;
        if (clock.gaps() > 0)
            job.summary.remarks.append(QStringLiteral("\"Time\" jumps ahead at %1; nothing is put in between")
                                           .arg(counted(clock.gaps(), QStringLiteral("place"))));
        clues.period = 1.0 / rate;
        clues.areRowsKept = areRowsKept;
        addMarks(clues);
        return clues;
    }

    void addMarks(LapClues &clues) const
    {
        if (job.options.lapsAt)
            clues.userMarks = LapMarks{QStringLiteral("--laps-at"), *job.options.lapsAt};
        std::vector<double> beacons = preamble.beaconMarkers;
        if (beacons.empty())
            beacons = numberList(preamble.value(u"Beacon Markers"));
        clues.marks = {{QStringLiteral("the header row \"Beacon Markers\""), beacons}, sidecarMarks(job.sidecar)};
        const QString range = preamble.range();
        bool isNumber = false;
        const qint64 number = range.startsWith(QLatin1String("Lap ")) ? range.mid(4).toInt(&isNumber) : 0;
        if (!isNumber)
            return;
        clues.onlyLap = number;
        const auto begin = numberIn(preamble.value(u"Start Time").toStdString());
        const auto end = numberIn(preamble.value(u"End Time").toStdString());
        // A range that lasts a whole number of rows may have been rounded up to that; any other is the lap's time.
        const double rows = begin && end ? (*end - *begin) * rate : 0.0;
        constexpr double rounding = 0.0006; // s, of three decimals
        if (std::abs(rows - std::round(rows)) > rounding * rate)
            clues.onlyLapEnd = clues.firstTime + (*end - *begin);
    }

    void write(LapPlan &plan)
    {
        DrivingCells cells(plan);
        driving = &cells;
        if (!hasClock) {
            ownTitles = QStringList{QStringLiteral("Time")};
            ownUnits = QStringList{QStringLiteral("s")};
        }
        columns = writtenColumns(titles, units, plan, ownTitles, &job.summary.remarks);
        writeHeader(plan);
        writeColumnRows(writer, plan, ownTitles, ownUnits, columns);

        const Progress progress(job.options.progress, 0.3, 1.0);
        RowsAhead rows(job.options.sourcePath, areRowsKept ? RowsAhead::Numbers::No : RowsAhead::Numbers::Yes);
        requireOpen(rows);
        RowClock clock = startedClock();
        RowView last;
        double lastTime = 0.0;
        bool saidBefore = true;
        for (qint64 row = 0; row < rowCount && !job.file.isFull() && rows.next(); ++row) {
            const RowView now = rows.row();
            const auto said = saidTime(now.cells);
            const double time = clock.next(said);
            isTimeSilent = !said || (!areRowsKept && !saidBefore);
            saidBefore = said.has_value();
            extraCells = extraCells || now.cells.size() > static_cast<std::size_t>(titles.size());
            if (areRowsKept) {
                writeRow(plan, now, now, 0.0, time);
            } else if (clock.beginsStretch()) {
                if (row > 0)
                    writeLastOfStretch(plan, last, lastTime);
                base = time;
                gridIndex = 0;
            } else {
                writeBetween(plan, last, lastTime, now, time);
            }
            last = now;
            lastTime = time;
            if (row % progressRows == 0)
                progress.tell(static_cast<double>(now.offset) / static_cast<double>(rows.fileBytes()));
        }
        if (!areRowsKept)
            writeLastOfStretch(plan, last, lastTime);
        if (const auto closing = plan.closingTime()) {
            writeRow(plan, last, last, 0.0, *closing, true);
            job.summary.remarks.append(closingRemark(*closing));
        }
        copier.tell(&job.summary.remarks);
        if (extraCells)
            job.summary.remarks.append(
                QStringLiteral("some rows have more cells than there are titles; those cells are left out"));
    }

    double gridTime() const { return base + static_cast<double>(gridIndex) / rewriteRate; }

    void writeBetween(LapPlan &plan, const RowView &from, double fromTime, const RowView &to, double toTime)
    {
        while (gridTime() < toTime - sameInstant) {
            const double time = gridTime();
            writeRow(plan, from, to, std::max((time - fromTime) / (toTime - fromTime), 0.0), time);
            ++gridIndex;
        }
    }

    void writeLastOfStretch(LapPlan &plan, const RowView &row, double time)
    {
        if (std::abs(gridTime() - time) <= sameInstant)
            writeRow(plan, row, row, 0.0, time);
    }

    // A row at `time`, which is `share` of the way between two rows of the source.
    void writeRow(LapPlan &plan, const RowView &from, const RowView &to, double share, double time,
                  bool isClosing = false)
    {
        const bool isExact = share / rate <= sameInstant;
        const std::size_t cellCount = columns.size() + drivingRoles.size() + 1;
        const std::size_t sourceCount = std::min(from.cells.size(), to.cells.size());
        const bool isTimeOwn = hasClock && (isClosing || isTimeSilent);
        writer.beginRow(cellCount, cellCount * ExportWriter::cellRoom);
        for (const LapRole role : drivingRoles) {
            const DrivingSource &source = plan.source(role);
            const bool isReplaced = isClosing || (role == LapRole::Position && plan.isAtLine(time));
            if (source.kind == DrivingSource::Kind::Channel && !isReplaced)
                addFromChannel(source, role, from.cells, to.cells, isExact ? 0.0 : share);
            else if (source.kind != DrivingSource::Kind::Unknown)
                driving->add(writer, role, time);
        }
        if (!hasClock)
            writer.addRounded(time, timeDecimals);
        for (const WrittenColumn &column : columns) {
            if (column.source >= sourceCount)
                break; // a short row stays one: the import reads no value there, where an empty field would be 0
            if (isTimeOwn && column.source == timeColumn)
                writer.addRounded(time / timeScale, timeDecimals);
            else if (isExact)
                copier.add(from.cells[column.source]);
            else
                copier.addBetween(from, to, column.source, share);
        }
        writer.endRow();
        ++job.summary.rows;
    }

    // A driving channel as a channel of the source has it. Where it starts again nothing lies between two rows, and a
    // row without a value does not end a lap.
    void addFromChannel(const DrivingSource &source, LapRole role, std::span<const Cell> from, std::span<const Cell> to,
                        double share)
    {
        double &held = heldValues[static_cast<std::size_t>(role)];
        const auto first = numberOf(from, *source.column);
        const auto second = numberOf(to, *source.column);
        if (first && share == 0.0 && source.scale == 1.0) {
            held = *first;
            copier.add(from[*source.column]);
            return;
        }
        if (first)
            held = *first * source.scale;
        double value = held;
        if (first && second && share > 0.0 && held - *second * source.scale < halfLapPercent)
            value += (*second * source.scale - held) * share;
        writer.addRounded(value, positionDecimals);
    }

    void writeHeader(const LapPlan &plan)
    {
        QList<QByteArray> line;
        qint64 lineNumber = 0;
        bool isChanged = false;
        bool hasRate = false;
        const QString writtenRate = QStringLiteral("60.000");
        const auto flush = [&] {
            if (!line.isEmpty())
                writer.writeLine(line);
            line.clear();
        };
        for (const HeaderEntry &entry : preamble.header) {
            if (entry.line != lineNumber)
                flush();
            lineNumber = entry.line;
            QString value = entry.value;
            if (entry.key == QLatin1String("Sample Rate")) {
                value = writtenRate;
                hasRate = true;
            } else if (entry.key == QLatin1String("Beacon Markers")) {
                if (!plan.starts().empty())
                    continue;
                value.replace(u',', u' ');
            } else if (value.contains(u',') && numberIn(value.toStdString())) {
                value.replace(u',', u'.');
            }
            isChanged = isChanged || QString::fromUtf8(cellText(value)) != value;
            if (entry.column > 0) {
                while (line.size() < entry.column)
                    line.append(QByteArray());
            }
            line += {cellText(entry.key), cellText(value), cellText(entry.unit)};
            if (entry.unit.isEmpty())
                line.removeLast();
        }
        flush();
        if (!hasRate)
            writer.writeLine({"Sample Rate", writtenRate.toLatin1(), "Hz"});
        writeBeaconMarkers(writer, plan);
        if (isChanged)
            job.summary.remarks.append(
                QStringLiteral("characters in header texts that this format cannot carry are replaced: commas by "
                               "semicolons, quotes by apostrophes, others by blanks"));
        const QString session = preamble.value(u"Session");
        if (getSessionFromString(session) != KOV::SDK::Session::UnknownSession)
            job.sessionWord = session;
    }

    void describe()
    {
        RewriteSummary &summary = job.summary;
        summary.source = QStringLiteral("text export, %1, %2")
                             .arg(!shape.isQuoted         ? QStringLiteral("cells without quotes")
                                  : shape.hasDecimalComma ? QStringLiteral("quoted cells with a decimal comma")
                                                          : QStringLiteral("quoted cells with a decimal point"),
                                  rateText(rate));
        const double share = rate / rewriteRate;
        summary.rate = areRowsKept ? QStringLiteral("kept as they are")
                       : rate > rewriteRate && std::abs(share - std::round(share)) < nearRate
                           ? QStringLiteral("one of %1 rows is kept").arg(std::round(share))
                           : QStringLiteral("interpolated in time between rows, without a filter");
        summary.channels = static_cast<qsizetype>(columns.size()) + ownTitles.size();
    }

    static constexpr qint64 progressRows = 4096;

    RewriteJob &job;
    ExportWriter writer;
    CellWriter copier;
    DrivingCells *driving = nullptr;
    TextPreamble preamble;
    QStringList titles;
    QStringList units;
    Shape shape;
    std::size_t timeColumn = 0;
    double timeScale = 0.0; // to seconds; 0 without a time column
    double headerRate = 0.0;
    double rate = 0.0;
    bool hasClock = false; // the time column says when rows were recorded
    bool areRowsKept = false;
    qint64 rowCount = 0;
    QStringList ownTitles;
    QStringList ownUnits;
    std::vector<WrittenColumn> columns;
    std::array<double, 4> heldValues{};
    double base = 0.0;
    qint64 gridIndex = 0;
    bool extraCells = false;
    bool isTimeSilent = false; // no time is written in the row in hand, or in the one that it is interpolated with
};

} // namespace

void rewriteExport(RewriteJob &job)
{
    ExportRewriter(job).run();
}

} // namespace Inspect
