// Numbers are formatted from whole numbers where that is exact, eight digits at a time in one word and without branches
// on how many there are: a large export is mostly digits.

#include "inspect/exportwriter.h"

#include <QtCore/QtEndian>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace Inspect {

namespace {

constexpr std::array<double, 10> powersOfTen{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr std::size_t perCell = 3; // quotes and comma
constexpr int wordDigits = 8;
constexpr quint32 wordPower = 100'000'000; // of ten, with as many digits

// The digits of a number below wordPower as bytes 0 to 9, the first in the lowest byte. A division by 100 or 10 is a
// multiplication and a shift, in two and four places of the word at once; both are exact for numbers so small.
quint64 digitsOf(quint32 number)
{
    quint64 digits = number / 10'000 | quint64{number % 10'000} << 32;
    quint64 quotients = digits * 5243 >> 19 & 0x0000007F'0000007F;
    digits = quotients | (digits - quotients * 100) << 16;
    quotients = digits * 103 >> 10 & 0x000F000F'000F000F;
    return quotients | (digits - quotients * 10) << 8;
}

} // namespace

QByteArray cellText(const QString &text)
{
    QString carried = text;
    for (QChar &character : carried) {
        if (character == u',')
            character = u';';
        else if (character == u'"')
            character = u'\'';
        else if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
                 character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return carried.toUtf8();
}

void ExportWriter::writeLine(const QList<QByteArray> &texts)
{
    QByteArray line;
    for (const QByteArray &text : texts) {
        if (shape.isQuoted && !text.isNull())
            line += '"' + text + '"';
        else
            line += text;
        line += ',';
    }
    line.chop(1);
    file.write(line);
    file.write(shape.lineEnd);
}

void ExportWriter::writeGap()
{
    for (int i = 0; i < shape.emptyLines; ++i)
        file.write(shape.lineEnd);
}

void ExportWriter::beginRow(std::size_t cellCount, std::size_t cellBytes)
{
    rowStart = file.room(cellBytes + cellCount * perCell + static_cast<std::size_t>(shape.lineEnd.size()) + 1);
    at = rowStart;
}

void ExportWriter::addText(std::string_view text)
{
    beginCell();
    at = std::copy(text.begin(), text.end(), at);
    endCell();
}

void ExportWriter::writeFixed(bool isNegative, quint64 magnitude, int decimals, Zeros zeros)
{
    constexpr int allDigits = 2 * wordDigits;
    quint64 upper = 0;
    quint64 rest = magnitude;
    if (magnitude >= wordPower) { // rarely, and mostly in the same columns
        upper = digitsOf(static_cast<quint32>(magnitude / wordPower));
        rest = magnitude % wordPower;
    }
    const quint64 lower = digitsOf(static_cast<quint32>(rest));
    const int leading = (upper != 0 ? std::countr_zero(upper) : 64 + std::countr_zero(lower)) / 8;
    const int trailing = (lower != 0 ? std::countl_zero(lower) : 64 + std::countl_zero(upper)) / 8;
    std::array<char, 2 * allDigits> text{};
    constexpr quint64 zeroCharacters = 0x30303030'30303030;
    qToLittleEndian(upper | zeroCharacters, text.data());
    qToLittleEndian(lower | zeroCharacters, text.data() + wordDigits);

    // Copies are of fixed size, within the room of a cell; what is too much is overwritten by what follows.
    char *end = at; // a member would be stored and loaded at each step
    *end = '-';
    end += isNegative ? 1 : 0;
    const int point = allDigits - decimals;
    const int first = std::min(leading, point - 1);
    std::memcpy(end, text.data() + first, allDigits);
    end += point - first;
    const int written = zeros == Zeros::Dropped ? std::max(decimals - trailing, 0) : decimals;
    *end = shape.decimalSign;
    std::memcpy(end + 1, text.data() + point, allDigits);
    at = end + (written > 0 ? written + 1 : 0);
}

void ExportWriter::addFixed(bool isNegative, quint64 magnitude, int decimals)
{
    beginCell();
    writeFixed(isNegative, magnitude, decimals, Zeros::Kept);
    endCell();
}

template <typename Number>
void ExportWriter::addShortest(Number value)
{
    beginCell();
    // The shortest form of 100000 would be 1e+05; people read plain digits more easily while they are few.
    constexpr Number smallestPlain = Number(1e-5);
    constexpr Number largestPlain = Number(1e15);
    const Number magnitude = std::abs(value);
    const bool isPlain = magnitude == 0 || (magnitude >= smallestPlain && magnitude < largestPlain);
    char *const begin = at;
    at =
        std::to_chars(at, at + cellRoom, value, isPlain ? std::chars_format::fixed : std::chars_format::scientific).ptr;
    if (shape.decimalSign != '.')
        std::replace(begin, at, '.', shape.decimalSign);
    endCell();
}

void ExportWriter::addNumber(double value)
{
    addShortest(value);
}

void ExportWriter::addNumber(float value)
{
    addShortest(value);
}

void ExportWriter::addRounded(double value, int decimals)
{
    constexpr double largestExact = 9e15; // below 2^53
    const double scaled = std::abs(value) * powersOfTen[static_cast<std::size_t>(decimals)];
    if (!(scaled < largestExact)) {
        addShortest(value);
        return;
    }
    auto magnitude = static_cast<quint64>(scaled);
    magnitude += scaled - static_cast<double>(magnitude) >= 0.5 ? 1 : 0; // exact, and faster than std::llround
    beginCell();
    writeFixed(value < 0.0 && magnitude != 0, magnitude, decimals, Zeros::Dropped);
    endCell();
}

void ExportWriter::endRow()
{
    if (at != rowStart)
        --at; // no comma after the last cell
    if (at == rowStart)
        *at++ = '0'; // the import drops empty lines, and reads an empty cell as 0
    at = std::copy(shape.lineEnd.begin(), shape.lineEnd.end(), at);
    file.commit(at);
}

} // namespace Inspect
