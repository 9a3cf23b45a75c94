#include "inspect/rowcomparison.h"

#include "csv/csvtext.h"
#include "sdk/lapchannels.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Inspect {

namespace {

constexpr int thinning = 6; // at 360 rows per second the import keeps every sixth

bool isZeroText(std::string_view text)
{
    bool hasZero = false;
    for (const char c : text) {
        if (c == '0')
            hasZero = true;
        else if (c != '.' && c != ',' && c != '-')
            return false;
    }
    return hasZero;
}

// Whether the text is digits with a point in or before them, as most cells are.
bool isPlainDecimal(std::string_view text)
{
    std::size_t points = 0;
    text.remove_prefix(text.starts_with('-') ? 1 : 0);
    for (const char c : text) {
        if (c == '.')
            ++points;
        else if (c < '0' || c > '9')
            return false;
    }
    return points == 1 && text.size() > 1;
}

// Whether a comma in a quoted cell is anything but a decimal sign, so that the import splits the cell there.
bool isSplitCell(const Cell &cell)
{
    return cell.isQuoted && cell.text.find(',') != std::string_view::npos && !numberIn(cell);
}

bool agrees(const Cell &cell, double sample)
{
    constexpr double tolerance = 1e-9;
    const auto number = numberIn(cell);
    return number && std::abs(*number - sample) <= tolerance * std::abs(sample);
}

} // namespace

void CellTally::setFirst(const Cell &cell, std::size_t column, qint64 line)
{
    first = {line, static_cast<qsizetype>(column) + 1, 0, {}};
    text = textOf(cell);
}

SampleWalk::SampleWalk(const Laps &laps, QList<QString> names)
    : laps(laps)
    , names(std::move(names))
    , columns(static_cast<std::size_t>(this->names.size()), nullptr)
{
}

bool SampleWalk::next()
{
    if (++index < length)
        return true;
    index = 0;
    do {
        if (++lapIndex >= laps.size())
            return false;
        length = laps[lapIndex]->size();
    } while (length == 0);
    const auto &lap = *laps[lapIndex];
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const QString &name = names[static_cast<qsizetype>(i)];
        const auto channel = name.isNull() ? nullptr : lap.channel(name);
        columns[i] = channel && channel->size() == length ? channel->samples().data() : nullptr;
    }
    return true;
}

double SampleWalk::at(std::size_t column) const
{
    return columns[column] ? columns[column][index] : std::numeric_limits<double>::quiet_NaN();
}

RowComparison::RowComparison(const QString &path, const Laps &laps)
    : log(path)
    , rowStride(preamble().value(u"Sample Rate").contains(QLatin1String("360")) ? thinning : 1)
{
    for (const auto &lap : laps)
        samples += lap->size();
    for (const TextColumn &column : log.columns()) {
        const std::size_t index = places.size();
        places.push_back({column.title, {preamble().titlesLine, static_cast<qsizetype>(index) + 1, 0, column.title}});
        names.append(Csv::valueName(column.title));
        columnOfName.insert(names.constLast(), index); // of columns with one name the import keeps the last
        if (names.constLast() == KOV::SDK::LapChannels::currentTime)
            repairedColumn = index;
    }
    QList<QString> kept = names;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (keptColumn(i) != i)
            kept[static_cast<qsizetype>(i)] = QString();
    }
    walk.emplace(laps, kept);
    watchColumns();
}

bool RowComparison::hasColumn(QLatin1String title) const
{
    return columnOfName.contains(Csv::valueName(QString(title)));
}

double RowComparison::seconds() const
{
    if (clock.first && *clock.last > *clock.first)
        return *clock.last - *clock.first;
    const double rate = preamble().sampleRate();
    return rate > 0.0 ? static_cast<double>(rows) / rate : 0.0;
}

// The columns that something is learned from besides their samples.
void RowComparison::watchColumns()
{
    for (std::size_t i = 0; i < places.size(); ++i) {
        const OtherName *name = otherName(places[i].name);
        if (!name)
            continue;
        const QString unit = log.columns()[i].unit.trimmed().toLower();
        if (name->role == LapRole::Time && !timeColumn && (unit == u"s" || unit == u"min" || unit == u"ms")) {
            constexpr double minute = 60.0;
            constexpr double millisecond = 1e-3;
            timeColumn = i;
            timeScale = unit == u"s" ? 1.0 : unit == u"min" ? minute : millisecond;
        } else if (LapCounter counter(*name); counter.isUseful()) {
            lapCounters.push_back({i, std::move(counter)});
        }
    }
}

bool RowComparison::takeRow()
{
    if (!log.nextRow())
        return false;
    if (log.isInPreamble()) {
        if (rowsInPreamble++ == 0)
            firstInPreamble = log.lineNumber();
        return true;
    }
    const std::span<const Cell> cells = log.cells();
    watchRow(cells);
    if (rows++ % rowStride != 0)
        return true;
    if (keptRows++ < samples && walk->next())
        compareCells(cells.first(std::min(cells.size(), places.size())));
    else if (firstUnread == 0)
        firstUnread = log.lineNumber();
    return true;
}

// What a row says by itself.
void RowComparison::watchRow(std::span<const Cell> cells)
{
    uneven.isLastShort = cells.size() < places.size();
    if (cells.size() != places.size()) {
        if (uneven.rows++ == 0) {
            uneven.firstLine = log.lineNumber();
            uneven.firstCells = cells.size();
        }
        uneven.longRows += cells.size() > places.size() ? 1 : 0;
    }
    const auto numberAt = [cells](std::size_t column) {
        return column < cells.size() ? numberIn(cells[column]) : std::nullopt;
    };
    if (timeColumn)
        watchClock(numberAt(*timeColumn));
    if (lapCounters.empty())
        return;
    const double rate = preamble().sampleRate();
    const double time = clock.last.value_or(static_cast<double>(rows) / (rate > 0.0 ? rate : 1.0));
    for (auto &[column, counter] : lapCounters) {
        if (const auto number = numberAt(column))
            counter.add(time, *number);
    }
}

void RowComparison::watchClock(std::optional<double> cell)
{
    constexpr double maxRowsOfStep = 2.5;
    constexpr double rounding = 0.011; // some exports give hundredths
    if (!cell || !std::isfinite(*cell))
        return;
    const double time = *cell * timeScale;
    const double step = time - clock.last.value_or(time);
    const double rate = preamble().sampleRate();
    if (step < 0.0 || (rate > 0.0 && step > maxRowsOfStep / rate + rounding)) {
        if (clock.gaps++ == 0) {
            clock.firstGap = places[*timeColumn].place;
            clock.firstGap.line = log.lineNumber();
            clock.gapFrom = *clock.last;
            clock.gapTo = time;
        }
        clock.falls += step < 0.0 ? 1 : 0;
        clock.skippedSeconds += std::max(step, 0.0);
    }
    if (!clock.first)
        clock.first = time;
    clock.last = time;
}

void RowComparison::compareCells(std::span<const Cell> cells)
{
    // What a comma inside quotes has shifted shows in the last cell, whichever cell it was in.
    if (!cells.empty() && !agrees(cells.back(), walk->at(cells.size() - 1))) {
        const auto split = std::find_if(cells.begin(), cells.end(), isSplitCell);
        if (split != cells.end()) {
            shifted.add(*split, static_cast<std::size_t>(split - cells.begin()), log.lineNumber());
            return;
        }
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (walk->isZero(i) && !isZeroText(cells[i].text))
            judgeZero(cells[i], i);
    }
}

// A cell that the import read as 0 and that does not look like one.
void RowComparison::judgeZero(const Cell &cell, std::size_t column)
{
    const qint64 line = log.lineNumber();
    if (cell.isQuoted && isPlainDecimal(cell.text)) { // nearly all cells may be: not converted
        quotedPoint.add(cell, column, line);
        return;
    }
    if (cell.text.find_first_not_of(" \t") == std::string_view::npos) {
        empty.add(cell, column, line);
        return;
    }
    const auto number = numberIn(cell);
    const bool isQuotedPoint = number && cell.isQuoted && cell.text.find('.') != std::string_view::npos;
    // The import repairs the beginning of the running time, which may make a 0 of a number.
    if (number && (*number == 0.0 || (column == repairedColumn && !isQuotedPoint)))
        return;
    (isQuotedPoint ? quotedPoint : notNumber).add(cell, column, line);
}

} // namespace Inspect
