#include "inspect/textlog.h"

#include <algorithm>
#include <utility>

namespace Inspect {

namespace {

constexpr qsizetype secondKeyColumn = 4;
constexpr std::size_t maxHeaderEntries = 10000; // a text without any empty line must not be kept as one header

bool isBlank(const Cell &cell)
{
    return cell.text.find_first_not_of(" \t") == std::string_view::npos;
}

bool isEmptyRow(std::string_view row)
{
    return row.size() % 2 == 0 && row.find_first_not_of('"') == std::string_view::npos;
}

} // namespace

const HeaderEntry *TextPreamble::find(QStringView key) const
{
    const auto found =
        std::find_if(header.begin(), header.end(), [key](const HeaderEntry &entry) { return entry.key == key; });
    return found == header.end() ? nullptr : &*found;
}

QString TextPreamble::value(QStringView key) const
{
    const HeaderEntry *entry = find(key);
    return entry ? entry->value : QString();
}

double TextPreamble::sampleRate() const
{
    const double rate = numberIn(value(u"Sample Rate").toStdString()).value_or(0.0);
    return rate > 0.0 ? rate : 0.0;
}

bool isDataRow(std::span<const Cell> cells)
{
    return cells.size() >= 2 && numberIn(cells.front()) &&
           std::all_of(cells.begin(), cells.end(), [](const Cell &cell) { return numberIn(cell) || isBlank(cell); });
}

std::vector<double> numberList(const QString &text)
{
    std::vector<double> numbers;
    const QString blanks = QString(text).replace(u';', u' ');
    for (QStringView word : QStringView(blanks).split(u' ', Qt::SkipEmptyParts)) {
        while (word.endsWith(u','))
            word.chop(1);
        const auto number = numberIn(word.toUtf8().toStdString());
        if (!number)
            break;
        numbers.push_back(*number);
    }
    return numbers;
}

TextLog::TextLog(const QString &path)
    : source(path)
{
    readPreamble();
}

bool TextLog::nextRow()
{
    while (source.next()) {
        if (isEmptyRow(source.line()))
            continue;
        splitCells(source.line(), &cellsOfRow);
        return true;
    }
    cellsOfRow.clear();
    return false;
}

bool TextLog::isInPreamble() const
{
    constexpr qint64 preambleLines = 3; // titles, units, separator
    return head.isWithoutEmptyLine || source.lineNumber() < head.titlesLine + preambleLines;
}

void TextLog::addHeaderRow()
{
    const auto text = [this](std::size_t column) {
        return column < cellsOfRow.size() ? textOf(cellsOfRow[column]) : QString();
    };
    if (cellsOfRow.size() < 2 || head.header.size() >= maxHeaderEntries)
        return;
    HeaderEntry first{text(0), text(1), text(2), source.lineNumber(), 0};
    bool takesRest = false;
    if (first.key == QLatin1String("Beacon Markers")) {
        // Without quotes its commas split it into cells: "Beacon Markers,77.784, 155.730".
        head.beaconMarkers = numberList(first.value);
        for (std::size_t i = 2; i < cellsOfRow.size() && numberIn(cellsOfRow[i]); ++i) {
            first.value += QLatin1String(", ") + text(i);
            first.unit.clear();
            head.beaconMarkers.push_back(*numberIn(cellsOfRow[i]));
            takesRest = i >= secondKeyColumn;
        }
    }
    head.header.push_back(std::move(first));
    const auto second = static_cast<std::size_t>(secondKeyColumn);
    if (!takesRest && cellsOfRow.size() > second && !text(second).isEmpty())
        head.header.push_back({text(second), text(second + 1), text(second + 2), source.lineNumber(), secondKeyColumn});
}

void TextLog::setColumns(std::string_view titles, std::string_view units)
{
    std::vector<Cell> cells;
    splitCells(titles, &cells);
    for (const Cell &cell : cells)
        head.columns.push_back({textOf(cell), {}});
    splitCells(units, &cells);
    for (std::size_t i = 0; i < std::min(cells.size(), head.columns.size()); ++i)
        head.columns[i].unit = textOf(cells[i]);
}

void TextLog::readPreamble()
{
    std::vector<Cell> cells;
    std::string_view following;
    std::string before; // the two lines before the one in hand
    std::string last;
    while (source.peek(&following)) {
        splitCells(following, &cells);
        if (isDataRow(cells) && !last.empty()) {
            // Titles and units, or titles alone: titles are as many as there are cells in a row.
            head.isWithoutEmptyLine = true;
            std::vector<Cell> titles;
            splitCells(before, &titles);
            const bool hasUnits = !before.empty() && titles.size() == cells.size();
            head.titlesLine = source.lineNumber() - (hasUnits ? 1 : 0);
            head.unitsLine = hasUnits ? source.lineNumber() : 0;
            setColumns(hasUnits ? before : last, hasUnits ? last : std::string_view());
            std::erase_if(head.header, [this](const HeaderEntry &entry) { return entry.line >= head.titlesLine; });
            return;
        }
        source.next();
        if (source.line().empty())
            break;
        splitCells(source.line(), &cellsOfRow);
        addHeaderRow();
        before = std::exchange(last, std::string(source.line()));
    }
    if (source.lineNumber() == 0 || !source.line().empty())
        return;
    head.headerEndLine = source.lineNumber();

    while (source.next() && source.line().empty())
        ++head.gapLines;
    if (source.line().empty())
        return;
    head.titlesLine = source.lineNumber();
    const std::string titles(source.line());

    const auto takesNextLine = [&] {
        if (!source.peek(&following))
            return false;
        splitCells(following, &cells);
        return !isDataRow(cells) && source.next();
    };
    std::string units;
    if (takesNextLine()) {
        head.unitsLine = source.lineNumber();
        units = source.line();
        if (takesNextLine()) {
            head.separatorLine = source.lineNumber();
            head.separatorText = textOf(source.line());
        }
    }
    setColumns(titles, units);
}

} // namespace Inspect
