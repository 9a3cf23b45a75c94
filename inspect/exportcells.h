#pragma once

// Rows of a text export on their way into another one: kept beyond the next row, copied, or interpolated. The rows:
// textlog.h; where they go: exportwriter.h.

#include "inspect/exportwriter.h"
#include "inspect/textlog.h"

#include <QtCore/QStringList>

#include <span>
#include <string>
#include <vector>

namespace Inspect {

/// The number that a cell holds.
struct Decimal
{
    double value; ///< NaN where it holds none
    int places;   ///< digits after the decimal sign
};

struct RowView
{
    std::span<const Cell> cells;
    std::span<const Decimal> numbers; ///< one for each cell, or none at all
};

/// A row that outlives the reading of the next. Views live until keep() is called.
class KeptRow
{
public:
    /// Keeps the current row of @p log.
    void keep(const TextLog &log);
    RowView view() const { return {cells, numbers}; }
    /// With the numbers of all cells, which are read once.
    RowView viewWithNumbers();

private:
    std::string text;
    std::vector<Cell> cells;
    std::vector<Decimal> numbers;
};

/// Puts cells of a source into a new export.
class CellWriter
{
public:
    explicit CellWriter(ExportWriter &exportWriter)
        : writer(exportWriter)
    {
    }

    /// The cell without quotes and with a decimal point. What is not a finite number becomes an empty cell.
    void add(const Cell &cell);
    /// What lies between the cells of @p column in two rows with numbers, @p share of the way; three decimals more than
    /// the cells have. The first cell where one of them is not a finite number.
    void addBetween(const RowView &from, const RowView &to, std::size_t column, double share);
    /// Adds to @p remarks what was not a finite number.
    void tell(QStringList *remarks) const;

private:
    void addUnusual(const Cell &cell);

    ExportWriter &writer;
    qint64 infinities = 0;
    qint64 texts = 0;
    qint64 blanks = 0;
};

} // namespace Inspect
