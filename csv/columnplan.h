#pragma once

// What the two column rows of a text export say: which channel a field belongs to. Used by rowstage.h and orvareader.h.

#include <QtCore/QList>
#include <QtCore/QString>

#include <cstddef>
#include <vector>

namespace Csv {

/// Value names (csvtext.h) and units by column.
///
/// Made once per file, so that no row has to normalise titles or look names up. Takes sixteen bytes per column, and
/// each different name and unit once. Columns after the first 1,048,576 are left out, as if they had no name.
class ColumnPlan
{
public:
    /// The channel-name row, without quotes.
    void setNames(const QString &row);
    /// The unit row, without quotes. Columns after its last entry have a null unit.
    void setUnits(const QString &row);

    bool hasNames() const { return !columns.empty(); }
    bool hasUnits() const { return unitsAreSet; }
    std::size_t columnCount() const { return columns.size(); }
    const QString &name(std::size_t column) const { return names[columns[column].name]; }
    /// The number of different names among the first @p columnCount columns.
    qint32 nameCount(std::size_t columnCount) const
    {
        return columnCount == 0 ? 0 : columns[columnCount - 1].nameCount;
    }
    /// The nearest column to the left that has the same name; negative if there is none.
    qint32 columnBefore(std::size_t column) const { return columns[column].before; }
    /// Null where the file gives none.
    QString unit(std::size_t column) const
    {
        return columns[column].unit < 0 ? QString() : units[columns[column].unit];
    }

private:
    struct Column
    {
        qint32 name;
        qint32 before;
        qint32 nameCount; // up to this column
        qint32 unit = -1;
    };

    std::vector<Column> columns;
    QList<QString> names;
    QList<QString> units;
    bool unitsAreSet = false;
};

} // namespace Csv
