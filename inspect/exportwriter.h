#pragma once

// Writes text exports: header rows, titles, units and rows, in the shape that the import understands best or in those
// of exporting tools. The bytes below it: blockwriter.h.

#include "inspect/blockwriter.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <cstddef>
#include <string_view>

namespace Inspect {

/// How the cells and lines of an export are written. The default is what the import reads in full.
struct ExportShape
{
    bool isQuoted = false; ///< all cells in double quotes
    char decimalSign = '.';
    QByteArrayView lineEnd = "\r\n";
    int emptyLines = 1; ///< after the header block, and after the units
};

/// Texts as an unquoted cell can carry them: a comma becomes a semicolon, a double quote an apostrophe, and control
/// characters, line breaks among them, become blanks. The import would split, drop or end what it finds otherwise.
QByteArray cellText(const QString &text);

/// Writes one export, from its first line to its last.
class ExportWriter
{
public:
    ExportWriter(BlockWriter &target, const ExportShape &exportShape)
        : file(target)
        , shape(exportShape)
    {
    }

    /// A line of the header block, the titles or the units. Texts are written as they are; a null one is a cell that
    /// never gets quotes.
    void writeLine(const QList<QByteArray> &texts);
    /// The empty lines after the header block or after the units.
    void writeGap();

    /// Starts a row. Its cells together must not take more than @p cellBytes, counting cellRoom for each number.
    void beginRow(std::size_t cellCount, std::size_t cellBytes);
    void addText(std::string_view text);
    /// Where the text of the next cell begins: up to cellRoom bytes can be written there, and then added.
    char *textPlace() { return at + (shape.isQuoted ? 1 : 0); }
    void addPlacedText(std::size_t size)
    {
        beginCell();
        at += size;
        endCell();
    }
    /// The number @p magnitude * 10^-decimals, negated if @p isNegative, also where it is 0. All decimals, at most 9,
    /// are written. The magnitude is less than 10^16.
    void addFixed(bool isNegative, quint64 magnitude, int decimals);
    /// The shortest text that reads back as @p value, which is finite. For a float it reads back as that float.
    void addNumber(double value);
    void addNumber(float value);
    /// The value to @p decimals (at most 9) with trailing zeros dropped; the shortest text where it is too large for
    /// that.
    void addRounded(double value, int decimals);
    /// Ends the row. One of a single empty cell gets a 0 in it.
    void endRow();

    /// Room to count for a number: digits, sign and decimal sign of any double.
    static constexpr std::size_t cellRoom = 32;

private:
    void beginCell()
    {
        if (shape.isQuoted)
            *at++ = '"';
    }
    void endCell()
    {
        if (shape.isQuoted)
            *at++ = '"';
        *at++ = ',';
    }
    enum class Zeros
    {
        Kept,
        Dropped
    };
    void writeFixed(bool isNegative, quint64 magnitude, int decimals, Zeros zeros); // zeros: those at the end
    template <typename Number>
    void addShortest(Number value);

    BlockWriter &file;
    ExportShape shape;
    char *rowStart = nullptr;
    char *at = nullptr;
};

} // namespace Inspect
