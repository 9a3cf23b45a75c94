#include "csv/csvfield.h"

#include "csv/csvnumber.h"

#include <algorithm>
#include <array>

namespace Csv {

namespace {

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

} // namespace

const char *readField(const char *at, const char *end, double *value)
{
    return *at == quote ? readQuotedField(at + 1, end, value) : readUnquotedField(at, end, value);
}

} // namespace Csv
