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

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// One bit a byte of a stretch of 64 bytes, the first byte's the lowest.
struct StretchBits
{
    quint64 commas = 0;
    quint64 quotes = 0;
    bool isAscii = true;
};

constexpr std::size_t stretchLength = 64;
constexpr quint64 everyByte = 0x0101010101010101;
constexpr quint64 highBits = 0x80 * everyByte;

// The high bit of each byte of an ASCII word that equals `c`, gathered into eight bits.
quint64 bitsEqual(quint64 word, char c)
{
    const quint64 difference = word ^ (static_cast<quint64>(c) * everyByte);
    const quint64 hits = (highBits - difference) & highBits; // set where the difference is 0: all are below 128
    return (hits >> 7) * 0x0102040810204080 >> 56;
}

// `length` is at most stretchLength; the bytes behind it up to the next multiple of eight may be read.
StretchBits scan(const char *text, std::size_t length)
{
    StretchBits bits;
    quint64 all = 0;
    for (std::size_t i = 0; i < length; i += 8) {
        quint64 word = 0;
        std::memcpy(&word, text + i, sizeof word);
        word = qFromLittleEndian(word);
        if (length - i < 8)
            word &= ~(~quint64(0) << (8 * (length - i)));
        all |= word;
        bits.commas |= bitsEqual(word, ',') << i;
        bits.quotes |= bitsEqual(word, quote) << i;
    }
    bits.isAscii = (all & highBits) == 0;
    return bits;
}

// Bit i of the result tells whether the number of set bits up to and including bit i is odd: which bytes lie in quotes.
quint64 parityUpTo(quint64 bits)
{
    for (unsigned shift = 1; shift < 64; shift *= 2)
        bits ^= bits << shift;
    return bits;
}

// A field that begins with a quote: a number that loses its quotes, or a text that keeps them and so reads as 0.
// Nothing when the comma or a quote inside makes that a matter of the whole row.
std::optional<double> quotedField(std::string_view field)
{
    if (field.size() < 2 || field.back() != quote)
        return std::nullopt;
    const std::string_view content = field.substr(1, field.size() - 2);
    const bool startsWithDigit =
        !content.empty() && isDigit(content[content.front() == '-' && content.size() > 1 ? 1 : 0]);
    if (startsWithDigit) {
        if (const auto value = wordDecimal(content, ','))
            return value;
        if (wordDecimal(content, '.'))
            return 0.0;
    }
    if (content.find(quote) != std::string_view::npos)
        return std::nullopt;
    const std::size_t comma = content.find(',');
    if (comma == std::string_view::npos) {
        const bool isInteger = startsWithDigit && std::all_of(content.begin() + 1, content.end(), isDigit);
        return isInteger ? toDouble(content) : 0.0;
    }
    constexpr std::size_t longestNumber = 64;
    if (!startsWithDigit || content.size() > longestNumber ||
        !std::all_of(content.begin() + 1, content.begin() + static_cast<std::ptrdiff_t>(comma), isDigit) ||
        !std::all_of(content.begin() + static_cast<std::ptrdiff_t>(comma) + 1, content.end(), isDigit))
        return std::nullopt;
    std::array<char, longestNumber> withPoint{};
    std::copy(content.begin(), content.end(), withPoint.begin());
    withPoint[comma] = '.';
    return toDouble({withPoint.data(), content.size()});
}

std::optional<double> readField(std::string_view field)
{
    if (field.empty())
        return 0.0;
    if (field.front() == quote)
        return quotedField(field);
    if (const auto value = wordDecimal(field, '.'))
        return value;
    if (field.find(quote) != std::string_view::npos)
        return std::nullopt;
    return toDouble(field);
}

// As many fields as readRow promises, or 0 when the row has to go the plain way.
std::size_t readRowQuickly(std::string_view line, std::span<double> values)
{
    std::size_t count = 0;
    std::size_t fieldBegin = 0;
    quint64 inQuotes = 0; // all ones while a quoted field runs on from one stretch to the next
    for (std::size_t at = 0; at < line.size(); at += stretchLength) {
        const StretchBits bits = scan(line.data() + at, std::min(stretchLength, line.size() - at));
        if (!bits.isAscii)
            return 0;
        const quint64 quoted = parityUpTo(bits.quotes) ^ inQuotes;
        inQuotes = quoted >> 63 ? ~quint64(0) : 0;
        for (quint64 separators = bits.commas & ~quoted; separators != 0; separators &= separators - 1) {
            const std::size_t fieldEnd = at + static_cast<std::size_t>(std::countr_zero(separators));
            const auto value = readField(line.substr(fieldBegin, fieldEnd - fieldBegin));
            if (!value)
                return 0;
            values[count++] = *value;
            if (count == values.size())
                return count;
            fieldBegin = fieldEnd + 1;
        }
    }
    const auto value = readField(line.substr(fieldBegin));
    if (!value)
        return 0;
    values[count++] = *value;
    return count;
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
