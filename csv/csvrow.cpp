#include "csv/csvrow.h"

#include "csv/csvnumber.h"
#include "csv/csvtext.h"

#include <algorithm>
#include <array>

namespace Csv {

namespace {

constexpr char quote = '"';

bool isDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isDigit);
}

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

// What stands in a pair of quotes that fills a field: a number loses the quotes, a text keeps them and so reads as 0.
bool readQuoted(std::string_view content, double *value)
{
    if (exactDecimal(content, ',', value))
        return true;
    const std::size_t comma = content.find(',');
    const std::size_t sign = content.starts_with('-') ? 1 : 0;
    const std::string_view integer = content.substr(sign, comma - sign);
    const bool startsAsInteger = !integer.empty() && isDigits(integer);
    if (comma == std::string_view::npos) {
        *value = startsAsInteger ? toDouble(content) : 0.0;
        return isAscii(content);
    }
    std::array<char, 64> withPoint{};
    if (!startsAsInteger || !isDigits(content.substr(comma + 1)) || content.size() > withPoint.size())
        return false;
    std::copy(content.begin(), content.end(), withPoint.begin());
    withPoint[comma] = '.';
    *value = toDouble({withPoint.data(), content.size()});
    return true;
}

// Stores the number of any field and returns the field's end; null when a comma, a quote or a character beyond ASCII in
// it makes that a matter of the whole row.
Q_NEVER_INLINE const char *readField(const char *at, const char *end, double *value)
{
    const auto textUpTo = [&at](const char *textEnd) {
        return std::string_view(at, static_cast<std::size_t>(textEnd - at));
    };
    if (*at == quote) {
        ++at;
        const char *const closing = std::find(at, end, quote);
        const char *const fieldEnd = closing + 1;
        if (closing == end || (fieldEnd != end && *fieldEnd != ','))
            return nullptr;
        return readQuoted(textUpTo(closing), value) ? fieldEnd : nullptr;
    }
    const char *const fieldEnd = std::find(at, end, ',');
    const std::string_view field = textUpTo(fieldEnd);
    if (exactDecimal(field, '.', value))
        return fieldEnd;
    if (!isAscii(field) || field.find(quote) != std::string_view::npos)
        return nullptr;
    *value = toDouble(field);
    return fieldEnd;
}

// Both store the number of a usual field, one of up to eight characters with a comma or the row's end behind it, and
// return the end of the field; null for any other field.

Q_ALWAYS_INLINE const char *readShortField(const char *at, const char *end, double *value)
{
    const std::size_t length = lowestMark(bytesUpTo(loadWord(at), ','));
    const char *const fieldEnd = at + length;
    if (*fieldEnd != ',' && fieldEnd != end)
        return nullptr;
    const bool isNegative = *at == '-';
    const std::size_t digits = length - (isNegative ? 1 : 0);
    if (digits == 0)
        *value = 0.0;
    else if (!shortDecimalBefore(fieldEnd, digits, isNegative, '.', value))
        return nullptr;
    return fieldEnd;
}

// The same for a field that begins with a quote in front of `at`.
Q_ALWAYS_INLINE const char *readShortQuotedField(const char *at, const char *end, double *value)
{
    const quint64 word = loadWord(at);
    const std::size_t length = lowestMark(bytesUpTo(word, quote));
    const char *const textEnd = at + length;
    const char *const fieldEnd = textEnd + 1;
    if (*textEnd != quote || (*fieldEnd != ',' && fieldEnd != end))
        return nullptr;
    const bool isNegative = *at == '-';
    const std::size_t digits = length - (isNegative ? 1 : 0);
    if (digits != 0 && at[isNegative ? 1 : 0] != ',' && shortDecimalBefore(textEnd, digits, isNegative, ',', value))
        return fieldEnd;
    const bool hasPoint = lowestMark(bytesEqual(word, '.')) < length;
    const bool hasComma = lowestMark(bytesEqual(word, ',')) < length;
    if (!hasPoint || hasComma || (word & highBits) != 0)
        return nullptr;
    *value = 0.0; // a point is no decimal sign in quotes
    return fieldEnd;
}

// As many fields as readRow promises, or 0 when the row has to go the plain way.
std::size_t readRowQuickly(std::string_view line, std::span<double> values)
{
    const char *at = line.data();
    const char *const end = at + line.size();
    for (std::size_t count = 0;;) {
        const char *fieldEnd =
            *at == quote ? readShortQuotedField(at + 1, end, &values[count]) : readShortField(at, end, &values[count]);
        if (!fieldEnd && !(fieldEnd = readField(at, end, &values[count])))
            return 0;
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
