#include "host/texttable.h"

#include "host/output.h"
#include "host/textformat.h"

#include <algorithm>
#include <utility>

namespace Host {

namespace {

constexpr QLatin1String gap("  ");
constexpr QLatin1String boldOn("\x1b[1m");
constexpr QLatin1String boldOff("\x1b[0m");

} // namespace

TextTable::TextTable(std::vector<Column> tableColumns)
    : columns(std::move(tableColumns))
    , widths(columns.size(), 0)
{
    QStringList titles;
    for (const Column &column : columns)
        titles.append(column.title);
    addRow(titles, true);
}

void TextTable::addRow(const QStringList &cells, bool isEmphasised)
{
    Row row{{}, isEmphasised};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        row.cells.append(printable(cells[static_cast<qsizetype>(i)]));
        widths[i] = std::max(widths[i], displayWidth(row.cells.last()));
    }
    rows.push_back(std::move(row));
}

void TextTable::print(Output &output) const
{
    for (const Row &row : rows) {
        QString line;
        QString pending; // blanks that only count if something follows, so that no line ends in blanks
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const QString &cell = row.cells[static_cast<qsizetype>(i)];
            const QString padding(widths[i] - displayWidth(cell), u' ');
            const bool isRight = columns[i].side == Column::Side::Right;
            if (isRight)
                pending += padding;
            if (!cell.isEmpty())
                line += std::exchange(pending, QString()) + cell;
            if (!isRight)
                pending += padding;
            pending += gap;
        }
        if (row.isEmphasised && output.isStyled())
            line = boldOn + line + boldOff;
        output.writeText(line + u'\n');
    }
}

} // namespace Host
