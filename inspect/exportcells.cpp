#include "inspect/exportcells.h"

#include "inspect/words.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Inspect {

namespace {

constexpr int addedDecimals = 3; // of an interpolated number
constexpr int maxDecimals = 9;

// Whether the text is digits with at most one decimal sign and a minus sign; the place of a comma in it.
bool isPlain(std::string_view text, std::size_t *comma)
{
    constexpr std::size_t longest = ExportWriter::cellRoom - 1;
    const bool isNegative = !text.empty() && text.front() == '-';
    std::size_t digits = 0;
    std::size_t signs = 0;
    for (std::size_t i = isNegative ? 1 : 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            ++digits;
        } else if ((c == '.' || c == ',') && signs == 0) {
            ++signs;
            if (c == ',')
                *comma = i;
        } else {
            return false;
        }
    }
    return digits > 0 && text.size() <= longest;
}

Decimal decimalOf(std::string_view text)
{
    // As many digits are exact in a double, and so is their power of ten: one division rounds as any conversion.
    constexpr std::size_t exactDigits = 15;
    static constexpr std::array<double, exactDigits + 1> powers{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                                1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    std::size_t comma = std::string_view::npos;
    if (text.size() > exactDigits || !isPlain(text, &comma)) {
        const auto number = numberIn(text);
        return {number.value_or(std::numeric_limits<double>::quiet_NaN()), maxDecimals};
    }
    quint64 digits = 0;
    std::size_t places = 0;
    bool isAfterSign = false;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            digits = 10 * digits + static_cast<quint64>(c - '0');
            places += isAfterSign ? 1 : 0;
        } else if (c != '-') {
            isAfterSign = true;
        }
    }
    const double value = static_cast<double>(digits) / powers[places];
    return {text.front() == '-' ? -value : value, static_cast<int>(places)};
}

} // namespace

void KeptRow::keep(const TextLog &log)
{
    numbers.clear();
    text.assign(log.row());
    cells.assign(log.cells().begin(), log.cells().end());
    for (Cell &cell : cells) {
        if (!cell.text.empty())
            cell.text = std::string_view(text).substr(static_cast<std::size_t>(cell.text.data() - log.row().data()),
                                                      cell.text.size());
    }
}

RowView KeptRow::viewWithNumbers()
{
    for (std::size_t i = numbers.size(); i < cells.size(); ++i)
        numbers.push_back(decimalOf(cells[i].text));
    return view();
}

void CellWriter::add(const Cell &cell)
{
    std::size_t comma = std::string_view::npos;
    if (!isPlain(cell.text, &comma)) {
        addUnusual(cell);
        return;
    }
    char *const text = writer.addText(cell.text);
    if (comma != std::string_view::npos)
        text[comma] = '.';
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
