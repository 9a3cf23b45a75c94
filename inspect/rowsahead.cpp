#include "inspect/rowsahead.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Inspect {

namespace {

constexpr std::size_t batchBytes = std::size_t{256} * 1024;
constexpr int batchCount = 3; // the one in hand, the one before it, and the one that is filled
constexpr int maxDecimals = 9;

Decimal decimalOf(std::string_view text)
{
    // As many digits are exact in a double, and so is their power of ten: one division rounds as any conversion.
    constexpr std::size_t exactDigits = 15;
    static constexpr std::array<double, exactDigits + 1> powers{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                                1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool isNegative = text.starts_with('-');
    quint64 digits = 0;
    std::size_t sign = std::string_view::npos;
    bool isPlain = text.size() <= exactDigits && text.size() > (isNegative ? 1 : 0);
    for (std::size_t i = isNegative ? 1 : 0; isPlain && i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9')
            digits = 10 * digits + static_cast<quint64>(c - '0');
        else if ((c == '.' || c == ',') && sign == std::string_view::npos)
            sign = i;
        else
            isPlain = false;
    }
    const bool hasDigits = sign == std::string_view::npos || text.size() > (isNegative ? 2 : 1);
    if (!isPlain || !hasDigits)
        return {numberIn(text).value_or(std::numeric_limits<double>::quiet_NaN()), maxDecimals};
    const std::size_t places = sign == std::string_view::npos ? 0 : text.size() - sign - 1;
    const double value = static_cast<double>(digits) / powers[places];
    return {isNegative ? -value : value, static_cast<int>(places)};
}

} // namespace

RowsAhead::RowsAhead(const QString &path, Numbers numbers)
    : log(path)
    , withNumbers(numbers == Numbers::Yes)
    , isLogOpen(log.isOpen())
    , error(log.errorString())
    , bytes(log.fileBytes())
{
    for (int i = 0; i < batchCount; ++i)
        spent.put(std::make_unique<Batch>());
    thread = std::thread([this] { read(); });
}

RowsAhead::~RowsAhead()
{
    spent.close();
    thread.join();
}

bool RowsAhead::next()
{
    if (current && index + 1 < current->rows.size()) {
        ++index;
        return true;
    }
    auto following = filled.take();
    if (!following && failure)
        std::rethrow_exception(failure);
    if (!following)
        return false;
    if (previous)
        spent.put(std::move(previous));
    previous = std::exchange(current, std::move(*following));
    index = 0;
    return true;
}

RowView RowsAhead::row() const
{
    const Batch::Row &row = current->rows[index];
    const auto part = [&row](const auto &all) { return std::span(all).subspan(row.firstCell, row.cellCount); };
    return {part(current->cells), withNumbers ? part(current->numbers) : std::span<const Decimal>(), row.offset};
}

void RowsAhead::read()
{
    try {
        readRows();
    } catch (...) { // too little memory
        failure = std::current_exception();
    }
    filled.close();
}

void RowsAhead::readRows()
{
    bool hasRow = log.nextRow();
    while (hasRow) {
        auto batch = spent.take();
        if (!batch)
            return;
        fill(**batch, &hasRow);
        filled.put(std::move(*batch));
    }
}

void RowsAhead::fill(Batch &batch, bool *hasRow)
{
    batch.cells.clear();
    batch.numbers.clear();
    batch.rows.clear();
    batch.text.clear();
    batch.text.reserve(std::max(batchBytes, log.row().size()));
    do {
        const std::string_view source = log.row();
        const char *const copy = batch.text.data() + batch.text.size();
        batch.text += source;
        batch.rows.push_back({batch.cells.size(), log.cells().size(), log.rowOffset()});
        for (const Cell &cell : log.cells())
            batch.cells.push_back({{copy + (cell.text.data() - source.data()), cell.text.size()}, cell.isQuoted});
        *hasRow = log.nextRow();
    } while (*hasRow && log.row().size() <= batch.text.capacity() - batch.text.size());
    if (withNumbers) {
        for (const Cell &cell : batch.cells)
            batch.numbers.push_back(decimalOf(cell.text));
    }
}

} // namespace Inspect
