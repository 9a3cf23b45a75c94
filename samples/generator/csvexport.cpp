// The text export. Rows are formatted digit by digit from whole numbers, so a big log is made at the speed of the disk.

#include "csvexport.h"

#include <QtCore/QList>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace samples {

namespace {

constexpr qsizetype longestField = 32; // quotes, sign, digits, decimal sign and separator of any number here

struct Form
{
    bool isQuoted;
    char decimalSign;
    const char *lineEnd;
    int emptyLines; // after the header and after the units
};

Form formOf(CsvStyle style)
{
    switch (style) {
    case CsvStyle::Tools:
        return {true, ',', "\r\n", 2};
    case CsvStyle::Points:
        return {true, '.', "\r\n", 2};
    case CsvStyle::Plain:
        break;
    }
    return {false, '.', "\n", 1};
}

// Writes a number given in units of its last decimal.
char *writeFixed(char *out, qint64 magnitude, int decimals, char decimalSign)
{
    char digits[24];
    const char *end = std::to_chars(digits, digits + sizeof digits, magnitude).ptr;
    const auto count = static_cast<int>(end - digits);
    if (decimals == 0) {
        std::memcpy(out, digits, static_cast<size_t>(count));
        return out + count;
    }
    const int whole = std::max(count - decimals, 0);
    if (whole == 0)
        *out++ = '0';
    out = std::copy(digits, digits + whole, out);
    *out++ = decimalSign;
    out = std::fill_n(out, std::max(decimals - count, 0), '0');
    return std::copy(digits + whole, digits + count, out);
}

char *writeRow(char *out, const CarState &state, const std::vector<Channel> &columns, const Form &form)
{
    for (const Channel &column : columns) {
        const double scaled = column.scaledValue(state);
        const qint64 value = rounded(scaled);
        if (form.isQuoted)
            *out++ = '"';
        // The tools keep the sign of what they round to zero.
        if (value < 0 || (form.isQuoted && scaled < 0.0))
            *out++ = '-';
        out = writeFixed(out, value < 0 ? -value : value, column.decimals, form.decimalSign);
        if (form.isQuoted)
            *out++ = '"';
        *out++ = ',';
    }
    --out; // there is no comma behind the last field
    for (const char *c = form.lineEnd; *c != 0; ++c)
        *out++ = *c;
    return out;
}

QByteArray cells(const QList<QByteArray> &texts, const Form &form)
{
    QByteArray line;
    for (const QByteArray &text : texts) {
        const bool isPadding = text.isNull();
        line += form.isQuoted && !isPadding ? '"' + text + '"' : text;
        line += ',';
    }
    line.chop(1);
    return line + form.lineEnd;
}

QByteArray decimal(double value, const Form &form)
{
    return QByteArray::number(value, 'f', 3).replace('.', form.decimalSign);
}

QByteArray head(const Drive &drive, const std::vector<Channel> &columns, const LogInfo &info, int rate,
                const Form &form)
{
    const QByteArray padding; // a null text: the tools leave cells that never hold anything without quotes
    const double duration = static_cast<double>(drive.sampleCount(rate)) / rate;
    const QByteArray empty("");
    QByteArray text;
    text += cells({"Format", "CSV Log", padding, padding, "Workbook", "Club"}, form);
    text += cells({"Venue", info.venue, padding, padding, "Worksheet", "Lap by lap"}, form);
    text += cells({"Vehicle", info.vehicle, padding, padding, "Vehicle Desc", empty}, form);
    text += cells({"Driver", info.driver, padding, padding, "Engine ID", empty}, form);
    text += cells({"Device", "Logger 8", padding, padding, "Session", info.session}, form);
    text += cells({"Comment", empty, padding, padding, "Origin Time", decimal(0.0, form), "s"}, form);
    text += cells({"Log Date", "14/06/2025", padding, padding, "Start Time", decimal(0.0, form), "s"}, form);
    // A narrow no-break space stands before AM and PM in the times of present-day systems.
    text += cells({"Log Time", form.isQuoted ? "2:35:07\xe2\x80\xafPM" : "14:35:07", padding, padding, "End Time",
                   decimal(duration, form), "s"},
                  form);
    text += cells({"Sample Rate", decimal(rate, form), "Hz", padding, "Duration", decimal(duration, form), "s"}, form);
    QByteArray gap;
    for (int i = 0; i < form.emptyLines; ++i)
        gap += form.lineEnd;
    QList<QByteArray> names;
    QList<QByteArray> units;
    for (const Channel &column : columns) {
        names += column.name;
        units += column.unit;
    }
    return text + gap + cells(names, form) + cells(units, form) + gap;
}

} // namespace

std::vector<Channel> csvColumns(quint64 seed, int count, CsvStyle style)
{
    if (!formOf(style).isQuoted)
        return loggerChannels(seed, count);
    std::vector<Channel> columns = loggerChannels(seed, std::max(count - 1, 0));
    for (Channel &column : columns) {
        if (column.name == "Gear")
            column.unit = "..";
    }
    columns.push_back({"Time", "min", 4, [](const CarState &state) { return state.time / 60.0; }});
    return columns;
}

void writeCsv(OutputFile &file, Drive &drive, const std::vector<Channel> &columns, const LogInfo &info, int rate,
              CsvStyle style)
{
    const Form form = formOf(style);
    const qsizetype longestRow = longestField * static_cast<qsizetype>(columns.size() + 1);
    const qint64 rows = drive.sampleCount(rate);
    file.write(head(drive, columns, info, rate, form));
    for (qint64 row = 0; row < rows && !file.isFull(); ++row)
        file.commit(writeRow(file.room(longestRow), drive.at(row, rate), columns, form));
}

qint64 csvRowsForSize(Drive &drive, const std::vector<Channel> &columns, int rate, CsvStyle style, qint64 sizeBytes)
{
    const Form form = formOf(style);
    std::vector<char> line(static_cast<size_t>(longestField) * (columns.size() + 1));
    constexpr qint64 triedRows = 120; // spread over some laps
    qint64 bytes = 0;
    for (qint64 row = 0; row < triedRows; ++row)
        bytes += writeRow(line.data(), drive.at(row * (rate + 1), rate), columns, form) - line.data();
    return std::max(sizeBytes * triedRows / std::max(bytes, 1LL), 1LL);
}

} // namespace samples
