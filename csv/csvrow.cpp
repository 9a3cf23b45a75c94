#include "csv/csvrow.h"

#include "csv/csvfield.h"
#include "csv/csvnumber.h"
#include "csv/csvtext.h"

namespace Csv {

namespace {

// These do what readField does for a usual field: one of up to eight characters that a comma or the row's end follows.
// Null for any other field.

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
std::size_t readRowQuickly(std::string_view line, std::span<double> values, FieldGroupReader readGroups)
{
    const char *at = line.data();
    const char *const end = at + line.size();
    for (std::size_t count = 0;;) {
        if (readGroups) {
            at = readGroups(at, end, values, &count);
            if (!at)
                return 0;
            if (at > end || count == values.size())
                return count;
        }
        for (int i = 0; i < fieldsPerGroup; ++i) {
            const char *fieldEnd = *at == quote ? readShortQuotedField(at + 1, end, &values[count])
                                                : readShortField(at, end, &values[count]);
            if (!fieldEnd && !(fieldEnd = readField(at, end, &values[count])))
                return 0;
            if (++count == values.size() || fieldEnd == end)
                return count;
            at = fieldEnd + 1;
        }
    }
}

} // namespace

bool isEmptyRow(std::string_view line)
{
    if (line.empty())
        return true;
    return line.front() == quote && line.size() % 2 == 0 && line.find_first_not_of(quote) == std::string_view::npos;
}

std::size_t readRow(const LineReader &line, std::span<double> values, FieldGroupReader readGroups)
{
    if (const auto &bytes = line.bytes()) {
        if (isEmptyRow(*bytes))
            return 0;
        if (const std::size_t count = readRowQuickly(*bytes, values, readGroups))
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
