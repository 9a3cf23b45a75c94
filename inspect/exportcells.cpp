#include "inspect/exportcells.h"

#include "inspect/words.h"

#include <algorithm>
#include <cmath>

namespace Inspect {

namespace {

constexpr int addedDecimals = 3; // of an interpolated number
constexpr int maxDecimals = 9;

// Copies a text of digits with at most one decimal sign and a minus sign, with a decimal point. False for any other.
bool copyPlain(std::string_view text, char *target)
{
    const std::size_t digitsBegin = text.starts_with('-') ? 1 : 0;
    std::size_t signs = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c < '0' || c > '9') {
            if (c == '.' || c == ',') {
                c = '.';
                ++signs;
            } else if (c != '-' || i > 0) {
                return false;
            }
        }
        target[i] = c;
    }
    return signs <= 1 && text.size() > digitsBegin + signs;
}

} // namespace

void CellWriter::add(const Cell &cell)
{
    const std::size_t size = cell.text.size();
    if (size < ExportWriter::cellRoom && copyPlain(cell.text, writer.textPlace()))
        writer.addPlacedText(size);
    else
        addUnusual(cell);
}

void CellWriter::addUnusual(const Cell &cell)
{
    const auto number = numberIn(cell);
    if (number && std::isfinite(*number)) {
        writer.addNumber(*number);
        return;
    }
    const bool isBlank = cell.text.find_first_not_of(" \t") == std::string_view::npos;
    ++(number ? infinities : isBlank ? blanks : texts);
    writer.addText({});
}

void CellWriter::addBetween(const RowView &from, const RowView &to, std::size_t column, double share)
{
    const Decimal &first = from.numbers[column];
    const Decimal &second = to.numbers[column];
    if (!std::isfinite(first.value) || !std::isfinite(second.value) || first.value == second.value)
        add(from.cells[column]);
    else
        writer.addRounded(first.value + (second.value - first.value) * share,
                          std::min(std::max(first.places, second.places) + addedDecimals, maxDecimals));
}

void CellWriter::tell(QStringList *remarks) const
{
    const auto remark = [remarks](qint64 count, const char *what) {
        if (count > 0)
            remarks->append(QString::fromLatin1(what).arg(counted(count, QStringLiteral("cell"))));
    };
    remark(infinities, "%1 with NaN or an infinity in the source: now empty, which the import reads as 0");
    remark(texts, "%1 without a number in the source: now empty, which the import reads as 0");
    remark(blanks, "%1 empty as in the source, which the import reads as 0");
}

} // namespace Inspect
