#pragma once

// Columns of text, lined up for a terminal or a fixed-width font.

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace Host {

class Output;

struct Column
{
    enum class Side
    {
        Left,
        Right
    };

    QString title;
    Side side = Side::Left;
};

/// A table with a title row, each column as wide as its widest cell. Holds all rows until it is printed.
class TextTable
{
public:
    explicit TextTable(std::vector<Column> columns);

    /// One cell a column; control characters are replaced.
    void addRow(const QStringList &cells, bool isEmphasised = false);
    void print(Output &output) const;

private:
    struct Row
    {
        QStringList cells;
        bool isEmphasised;
    };

    std::vector<Column> columns;
    std::vector<qsizetype> widths;
    std::vector<Row> rows; // the titles first
};

} // namespace Host
