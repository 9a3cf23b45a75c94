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

// The number of a quoted text with one comma, between digits or after them. False for any other text.
bool readQuotedDecimal(std::string_view content, std::size_t comma, double *value)
{
    const std::size_t sign = content.starts_with('-') ? 1 : 0;
    std::array<char, 64> withPoint{};
    if (comma == sign || !isDigits(content.substr(sign, comma - sign)) || !isDigits(content.substr(comma + 1)) ||
        content.size() > withPoint.size())
        return false;
    std::copy(content.begin(), content.end(), withPoint.begin());
    withPoint[comma] = '.';
    *value = toDouble({withPoint.data(), content.size()});
    return true;
}

// The content of a pair of quotes that encloses a field: an integer or a decimal loses the quotes, any other text keeps
// them and so reads as 0.
bool readQuotedContent(std::string_view content, double *value)
{
    if (exactDecimal(content, ',', value))
        return true;
    if (const std::size_t comma = content.find(','); comma != std::string_view::npos)
        return readQuotedDecimal(content, comma, value);
    const std::string_view digits = content.substr(content.starts_with('-') ? 1 : 0);
    *value = !digits.empty() && isDigits(digits) ? toDouble(content) : 0.0;
    return isAscii(content);
}

// These store the number of a field and return the field's end; null when a comma, a quote or a character beyond ASCII
// in it makes the whole row a case for the reference path.

// A field that begins with a quote before `at`.
const char *readQuotedField(const char *at, const char *end, double *value)
{
    const char *const closing = std::find(at, end, quote);
    const char *const fieldEnd = closing + 1;
    if (closing == end || (fieldEnd != end && *fieldEnd != ','))
        return nullptr;
    return readQuotedContent({at, static_cast<std::size_t>(closing - at)}, value) ? fieldEnd : nullptr;
}

const char *readUnquotedField(const char *at, const char *end, double *value)
{
    const char *const fieldEnd = std::find(at, end, ',');
    const std::string_view field(at, static_cast<std::size_t>(fieldEnd - at));
    if (exactDecimal(field, '.', value))
        return fieldEnd;
    if (!isAscii(field) || field.find(quote) != std::string_view::npos)
        return nullptr;
    *value = toDouble(field);
    return fieldEnd;
}

Q_NEVER_INLINE const char *readField(const char *at, const char *end, double *value)
{
    return *at == quote ? readQuotedField(at + 1, end, value) : readUnquotedField(at, end, value);
}

// These do the same for a usual field: one of up to eight characters that a comma or the row's end follows. Null for
// any other field.

static_assert(sizeof(quint64) <= LineReader::slack, "words are loaded that reach beyond the row, before it and after");

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

// A field that begins with a quote before `at`.
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
    *value = 0.0; // within quotes, a point is not a decimal sign
    return fieldEnd;
}

// The fast path: what readRow returns, or 0 for a row that has to take the reference path.
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
