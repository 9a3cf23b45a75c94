#pragma once

// What is in a text export: what its header says, its columns, and its rows cell by cell, whatever the import makes
// of them. Cells and numbers: cell.h.

#include "inspect/cell.h"
#include "inspect/linesource.h"

#include <QtCore/QString>

#include <span>
#include <string_view>
#include <vector>

namespace Inspect {

/// A key of the header block and its value. A row has one in its first columns, and often another from the fifth on.
struct HeaderEntry
{
    QString key;
    QString value;
    QString unit; ///< the cell after the value
    qint64 line = 0;
    qsizetype column = 0; ///< of the key, from 0
};

struct TextColumn
{
    QString title;
    QString unit;
};

/// What comes before the rows. Lines count from 1; 0 means a line that the file does not have.
struct TextPreamble
{
    std::vector<HeaderEntry> header;
    qint64 headerEndLine = 0; ///< the empty line that closes the header block
    qint64 titlesLine = 0;
    qint64 unitsLine = 0;
    qint64 separatorLine = 0;        ///< the line after the units, which the import drops, unless it holds a row
    QString separatorText;           ///< of that line; empty in any sound file
    qint64 gapLines = 0;             ///< further empty lines between header block and titles
    bool isWithoutEmptyLine = false; ///< rows follow the header block directly: titles and units were found by the rows
    std::vector<TextColumn> columns;
    /// "Beacon Markers" in seconds on the clock of the rows, as written: they may fall, or be a single 0.
    std::vector<double> beaconMarkers;

    /// The first entry with this key, compared case-sensitively; null where there is none.
    const HeaderEntry *find(QStringView key) const;
    /// The value of that entry; empty where there is none.
    QString value(QStringView key) const;
    /// Rows per second as "Sample Rate" says; 0 where it does not.
    double sampleRate() const;
    /// "Range": "entire outing", or one lap such as "Lap 7".
    QString range() const { return value(u"Range"); }
};

/// Reads an export from its beginning to its end, once. Memory: a block of 256 KiB, or three times the longest line.
///
/// The layout is a header block, an empty line, titles, units, a line that says nothing, and rows; any number of empty
/// lines between them. Where rows follow the header block without an empty line, the lines before the first row are the
/// titles and the units. A row in the place of units or separator counts as a row.
class TextLog
{
public:
    /// Opens the export at @p path and reads up to its rows. What cannot be opened has none of all that.
    explicit TextLog(const QString &path);

    /// Opened, and why not.
    bool isOpen() const { return source.isOpen(); }
    QString errorString() const { return source.errorString(); }
    qint64 fileBytes() const { return source.fileBytes(); }
    /// In UTF-16 or UTF-32. Rows are given in UTF-8 then, and have no offset.
    bool isWide() const { return source.isWide(); }

    const TextPreamble &preamble() const { return head; }
    const std::vector<TextColumn> &columns() const { return head.columns; }

    /// Goes to the next row; false at the end. Lines that are empty, or hold an even number of quotes and nothing else,
    /// are passed over.
    bool nextRow();

    /// The cells of the row, at least one. Views until nextRow() is called.
    std::span<const Cell> cells() const { return cellsOfRow; }
    /// The row without its line ending, as it is in the file. A view until nextRow() is called.
    std::string_view row() const { return source.line(); }
    /// The line of the row, from 1.
    qint64 lineNumber() const { return source.lineNumber(); }
    /// Where the row begins in the file, so that [offset, offset + row().size()) are its bytes; -1 in a wide file.
    qint64 rowOffset() const { return source.offset(); }
    /// Whether the import drops this row, since it is where units or the separator belong.
    bool isInPreamble() const;

private:
    void readPreamble();
    void addHeaderRow();
    void setColumns(std::string_view titles, std::string_view units);

    LineSource source;
    TextPreamble head;
    std::vector<Cell> cellsOfRow;
};

/// Whether @p cells are those of a row: a number first, at least two cells, and no text among them.
bool isDataRow(std::span<const Cell> cells);

/// The numbers in @p text, separated by blanks, semicolons, or commas before blanks: "24.324 190.167 " and
/// "77,784, 155,730" are two each. Reading ends at what is not a number.
std::vector<double> numberList(const QString &text);

} // namespace Inspect
