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

bool isDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isDigit);
}

// A quoted field that is no short number: a longer number loses its quotes, a text keeps them and so reads as 0.
bool readLongQuoted(std::string_view content, double *value)
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
Q_ALWAYS_INLINE bool readField(std::string_view field, double *value)
{
    if (field.empty()) {
        *value = 0.0;
        return true;
    }
    if (field.front() != quote) {
        if (wordDecimal(field, '.', value))
            return true;
        if (field.find(quote) != std::string_view::npos)
            return false;
        *value = toDouble(field);
        return true;
    }
    if (field.size() < 2 || field.back() != quote)
        return false;
    const std::string_view content = field.substr(1, field.size() - 2);
    const bool startsWithSign = content.starts_with(',') || content.starts_with("-,");
    if (!startsWithSign && wordDecimal(content, ',', value))
        return true;
    if (wordDecimal(content, '.', value)) {
        *value = 0.0; // a point is no decimal sign in quotes
        return true;
    }
    return readLongQuoted(content, value);
}

// As many fields as readRow promises, or 0 when the row has to go the plain way.
//
// Some stretches are searched before their fields are read, so that the processor reads fields side by side.
std::size_t readRowQuickly(std::string_view line, std::span<double> values)
{
    constexpr std::size_t stretchesAtOnce = 16;
    std::array<quint32, stretchesAtOnce * stretchLength> ends; // NOLINT(cppcoreguidelines-pro-type-member-init)
    std::size_t count = 0;
    const char *fieldBegin = line.data();
    quint64 inQuotes = 0; // all ones while a quoted field runs on from one stretch to the next
    for (std::size_t at = 0; at < line.size();) {
        const char *const batch = line.data() + at;
        std::size_t endCount = 0;
        for (std::size_t offset = 0; offset < stretchesAtOnce * stretchLength && at < line.size();
             offset += stretchLength, at += stretchLength) {
            const StretchBits bits = scan(line.data() + at, std::min(stretchLength, line.size() - at));
            if (!bits.isAscii)
                return 0;
            const quint64 quoted = parityUpTo(bits.quotes) ^ inQuotes;
            inQuotes = quoted >> 63 ? ~quint64(0) : 0;
            for (quint64 separators = bits.commas & ~quoted; separators != 0; separators &= separators - 1)
                ends[endCount++] = static_cast<quint32>(offset) + static_cast<quint32>(std::countr_zero(separators));
        }
        for (std::size_t i = 0; i < endCount; ++i) {
            const char *const fieldEnd = batch + ends[i];
            if (!readField({fieldBegin, static_cast<std::size_t>(fieldEnd - fieldBegin)}, &values[count]))
                return 0;
            if (++count == values.size())
                return count;
            fieldBegin = fieldEnd + 1;
        }
    }
    const auto rest = static_cast<std::size_t>(line.data() + line.size() - fieldBegin);
    return readField({fieldBegin, rest}, &values[count]) ? count + 1 : 0;
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
