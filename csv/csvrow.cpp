#include "csv/csvrow.h"

#include "csv/csvnumber.h"
#include "csv/csvtext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace Csv {

namespace {

constexpr char quote = '"';

bool isDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isDigit);
}

// What stands in a pair of quotes that fills a field: a number loses the quotes, a text keeps them and so reads as 0.
bool readQuoted(std::string_view content, double *value)
{
    if (content.find(quote) != std::string_view::npos)
        return false;
    const std::size_t comma = content.find(',');
    const std::size_t sign = content.starts_with('-') ? 1 : 0;
    const std::string_view integer = content.substr(sign, comma - sign);
    const bool startsAsInteger = !integer.empty() && isDigits(integer);
    if (comma == std::string_view::npos) {
        *value = startsAsInteger ? toDouble(content) : 0.0;
        return true;
    }
    std::array<char, 64> withPoint{};
    if (!startsAsInteger || !isDigits(content.substr(comma + 1)) || content.size() > withPoint.size())
        return false;
    std::copy(content.begin(), content.end(), withPoint.begin());
    withPoint[comma] = '.';
    *value = toDouble({withPoint.data(), content.size()});
    return true;
}

// Stores the number of one field, or answers false when a comma or a quote in it makes that a matter of the whole row.
bool readField(std::string_view field, double *value)
{
    const auto isAscii = [](char c) { return static_cast<signed char>(c) >= 0; };
    if (!std::all_of(field.begin(), field.end(), isAscii))
        return false;
    if (field.starts_with(quote))
        return field.size() >= 2 && field.back() == quote && readQuoted(field.substr(1, field.size() - 2), value);
    if (field.find(quote) != std::string_view::npos)
        return false;
    *value = toDouble(field);
    return true;
}

// Where the field that begins at `at` ends: a comma in quotes is not its end.
const char *endOfField(const char *at, const char *end)
{
    bool isQuoted = false;
    for (; at != end && (*at != ',' || isQuoted); ++at)
        isQuoted ^= *at == quote;
    return at;
}

constexpr std::ptrdiff_t shortFieldReach = 10; // bytes that readShortField looks at

// Loads the word at `at` of a row that ends at `end`. Near the end, commas take the place of what stands behind it.
template <bool isNearEnd>
Q_ALWAYS_INLINE quint64 loadRowWord(const char *at, const char *end)
{
    const quint64 word = loadWord(at);
    const auto left = static_cast<unsigned>(end - at);
    if (!isNearEnd || left >= sizeof word)
        return word;
    constexpr quint64 commas = ',' * quint64(0x0101010101010101);
    const quint64 behind = ~quint64(0) << 8 * left;
    return (word & ~behind) | (commas & behind);
}

// The usual fields: up to seven characters, in quotes or not. Stores the number and returns the end of the field; null
// for any other field. Where fewer than shortFieldReach bytes of the row are left, isNearEnd has to be true.
template <bool isNearEnd>
Q_ALWAYS_INLINE const char *readShortField(const char *at, const char *end, double *value)
{
    if ((isNearEnd && at == end) || *at != quote) {
        const quint64 word = loadRowWord<isNearEnd>(at, end);
        const quint64 commas = bytesEqual(word, ',');
        if (commas == 0)
            return nullptr;
        const auto length = static_cast<unsigned>(std::countr_zero(commas)) / 8;
        if (length == 0)
            *value = 0.0;
        else if (!wordDecimal(word, length, '.', value))
            return nullptr;
        return at + length;
    }
    const quint64 word = loadRowWord<isNearEnd>(at + 1, end);
    const quint64 quotes = bytesEqual(word, quote);
    if (quotes == 0)
        return nullptr;
    const auto length = static_cast<unsigned>(std::countr_zero(quotes)) / 8;
    const char *const fieldEnd = at + length + 2;
    if (length == 0 || (*fieldEnd != ',' && !(isNearEnd && fieldEnd == end)))
        return nullptr;
    const auto contains = [word, length](char c) {
        const quint64 hits = bytesEqual(word, c);
        return hits != 0 && static_cast<unsigned>(std::countr_zero(hits)) / 8 < length;
    };
    constexpr quint64 beyondAscii = 0x8080808080808080;
    if (contains('.') && !contains(',') && (word & beyondAscii) == 0) {
        *value = 0.0; // a point is no decimal sign in quotes
        return fieldEnd;
    }
    const bool startsWithNumber = (word & 0xFF) != ',' && (word & 0xFFFF) != ('-' | ',' << 8);
    return startsWithNumber && wordDecimal(word, length, ',', value) ? fieldEnd : nullptr;
}

// As many fields as readRow promises, or 0 when the row has to go the plain way.
std::size_t readRowQuickly(std::string_view line, std::span<double> values)
{
    const char *at = line.data();
    const char *const end = at + line.size();
    for (std::size_t count = 0;;) {
        const char *fieldEnd = end - at >= shortFieldReach ? readShortField<false>(at, end, &values[count])
                                                           : readShortField<true>(at, end, &values[count]);
        if (!fieldEnd) {
            fieldEnd = endOfField(at, end);
            if (!readField({at, static_cast<std::size_t>(fieldEnd - at)}, &values[count]))
                return 0;
        }
        if (++count == values.size() || fieldEnd == end)
            return count;
        at = fieldEnd + 1;
    }
}

} // namespace

bool isEmptyRow(std::string_view line)
{
    if (line.empty())
        return true;
    return line.front() == quote && line.size() % 2 == 0 && line.find_first_not_of(quote) == std::string_view::npos;
}

std::size_t readRow(const LineReader &line, std::span<double> values)
{
    if (const auto &bytes = line.bytes()) {
        if (isEmptyRow(*bytes))
            return 0;
        if (const std::size_t count = readRowQuickly(*bytes, values))
            return count;
    }
    return readRowPlainly(line.text(), values);
}

std::size_t readRowPlainly(QString line, std::span<double> values)
{
    processCsvString(line);
    if (line.isEmpty())
        return 0;
    std::size_t count = 0;
    for (const QStringView field : QStringView(line).tokenize(u',')) {
        values[count++] = field.toDouble();
        if (count == values.size())
            break;
    }
    return count;
}

} // namespace Csv
