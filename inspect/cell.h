#pragma once

// One cell of a text export, unchanged, and the number that a person would read in it. The rows: textlog.h.

#include <QtCore/QString>

#include <optional>
#include <string_view>
#include <vector>

namespace Inspect {

/// A view into the row that holds it; lives as long as that does.
struct Cell
{
    std::string_view text; ///< without its quotes; a quote inside a quoted cell is still doubled
    bool isQuoted = false;
};

/// Splits @p row at the commas outside quotes, into @p cells. A quoted cell ends at the quote before a comma or the end
/// of the row; where that is missing it runs to the end. An empty row is one empty cell.
void splitCells(std::string_view row, std::vector<Cell> *cells);

/// The number that @p text is: with a decimal point or a decimal comma, a sign, an exponent, blanks around it. Nothing
/// for any other text, also where it has both a point and a comma. NaN and infinities are numbers, too.
std::optional<double> numberIn(std::string_view text);
inline std::optional<double> numberIn(const Cell &cell)
{
    return numberIn(cell.text);
}

/// @p bytes as text: UTF-8, or Latin-1 where they are not valid UTF-8.
QString textOf(std::string_view bytes);
/// The text of @p cell, with doubled quotes made single.
QString textOf(const Cell &cell);

} // namespace Inspect
