#pragma once

// Cells of a text export on their way into another one: copied, or interpolated. Where they come from: rowsahead.h;
// where they go: exportwriter.h.

#include "inspect/exportwriter.h"
#include "inspect/rowsahead.h"

#include <QtCore/QStringList>

namespace Inspect {

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
