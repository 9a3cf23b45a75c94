// Rows are formatted digit by digit from whole numbers where that is exact, so a large export is written at the speed
// of the disk.

#include "inspect/exportwriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Inspect {

namespace {

constexpr std::array<double, 10> powersOfTen{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr std::array<quint64, 10> wholePowersOfTen{1,       10,        100,        1'000,       10'000,
                                                   100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

constexpr std::size_t perCell = 3; // quotes and comma

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

char *ExportWriter::addText(std::string_view text)
{
    beginCell();
    char *const begin = at;
    at = std::copy(text.begin(), text.end(), at);
    endCell();
    return begin;
}

void ExportWriter::writeFixed(bool isNegative, quint64 magnitude, int decimals)
{
    const auto writeWhole = [this](quint64 number) { at = std::to_chars(at, at + cellRoom, number).ptr; };
    if (isNegative)
        *at++ = '-';
    if (decimals == 0) {
        writeWhole(magnitude);
        return;
    }
    const quint64 one = wholePowersOfTen[static_cast<std::size_t>(decimals)];
    writeWhole(magnitude / one);
    char *const sign = at;
    writeWhole(one + magnitude % one); // the 1 before all the decimals makes room for the sign
    *sign = shape.decimalSign;
}

void ExportWriter::addFixed(bool isNegative, quint64 magnitude, int decimals)
{
    beginCell();
    writeFixed(isNegative, magnitude, decimals);
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
    const auto magnitude = static_cast<quint64>(std::llround(scaled));
    beginCell();
    writeFixed(value < 0.0 && magnitude != 0, magnitude, decimals);
    if (decimals > 0) {
        while (at[-1] == '0')
            --at;
        if (at[-1] == shape.decimalSign)
            --at;
    }
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
