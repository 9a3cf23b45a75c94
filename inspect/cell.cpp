#include "inspect/cell.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QStringDecoder>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

namespace Inspect {

namespace {

constexpr std::size_t maxNumberLength = 64; // no logger writes as many characters

// The index of the quote that closes the cell whose text begins at @p begin, or the row's length where none does.
std::size_t closingQuote(std::string_view row, std::size_t begin)
{
    for (std::size_t at = begin; at < row.size(); ++at) { // cells are too short for a call of find() to pay
        if (row[at] != '"')
            continue;
        if (at + 1 == row.size() || row[at + 1] == ',')
            return at;
        if (row[at + 1] == '"')
            ++at; // a doubled quote is a character of the text
    }
    return row.size();
}

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

void splitCells(std::string_view row, std::vector<Cell> *cells)
{
    cells->clear();
    const char *const end = row.data() + row.size();
    const char *at = row.data();
    for (;;) {
        if (at != end && *at == '"') {
            const auto begin = static_cast<std::size_t>(at - row.data()) + 1;
            const std::size_t close = closingQuote(row, begin);
            cells->push_back({row.substr(begin, close - begin), true});
            at = row.data() + std::min(close + 1, row.size());
        } else {
            const char *const begin = at;
            while (at != end && *at != ',')
                ++at;
            cells->push_back({{begin, static_cast<std::size_t>(at - begin)}, false});
        }
        if (at == end)
            return;
        ++at; // the comma
    }
}

std::optional<double> numberIn(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    if (text.empty() || text.size() > maxNumberLength)
        return std::nullopt;
    std::array<char, maxNumberLength> withPoint;
    if (const std::size_t comma = text.find(','); comma != std::string_view::npos) {
        if (text.find('.') != std::string_view::npos)
            return std::nullopt;
        std::copy(text.begin(), text.end(), withPoint.begin());
        withPoint[comma] = '.'; // from_chars stops at a second comma
        text = {withPoint.data(), text.size()};
    }
    double value = 0.0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (stop != text.data() + text.size() || error == std::errc::invalid_argument)
        return std::nullopt;
    if (error == std::errc::result_out_of_range) {
        const bool isTiny = text.find("e-") != std::string_view::npos || text.find("E-") != std::string_view::npos;
        value = isTiny ? 0.0 : std::numeric_limits<double>::infinity();
        return text.front() == '-' ? -value : value;
    }
    return value;
}

QString textOf(std::string_view bytes)
{
    const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(view);
    return decoder.hasError() ? QString::fromLatin1(view) : text;
}

QString textOf(const Cell &cell)
{
    QString text = textOf(cell.text);
    if (cell.isQuoted)
        text.replace(QLatin1String("\"\""), QLatin1String("\""));
    return text;
}

} // namespace Inspect
