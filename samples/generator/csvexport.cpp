// The text export. Rows are formatted digit by digit from whole numbers, so a big log is made at the speed of the disk.

#include "csvexport.h"

#include "inspect/exportwriter.h"

#include <QtCore/QBuffer>
#include <QtCore/QList>

#include <algorithm>

namespace samples {

namespace {

using Inspect::ExportShape;
using Inspect::ExportWriter;

ExportShape shapeOf(CsvStyle style)
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

void writeRow(ExportWriter &writer, const CarState &state, const std::vector<Channel> &columns,
              const ExportShape &shape)
{
    writer.beginRow(columns.size(), columns.size() * ExportWriter::cellRoom);
    for (const Channel &column : columns) {
        const double scaled = column.scaledValue(state);
        const qint64 value = rounded(scaled);
        // The tools keep the sign of what they round to zero.
        const bool isNegative = value < 0 || (shape.isQuoted && scaled < 0.0);
        writer.addFixed(isNegative, static_cast<quint64>(value < 0 ? -value : value), column.decimals);
    }
    writer.endRow();
}

QByteArray decimal(double value, const ExportShape &shape, int decimals = 3)
{
    return QByteArray::number(value, 'f', decimals).replace('.', shape.decimalSign);
}

void writeHead(ExportWriter &writer, const Drive &drive, const std::vector<Channel> &columns, const LogInfo &info,
               int rate, const ExportShape &shape)
{
    const QByteArray padding; // a null text: the tools leave cells that never hold anything without quotes
    const double duration = static_cast<double>(drive.sampleCount(rate)) / rate;
    const QByteArray empty("");
    writer.writeLine({"Format", "CSV Log", padding, padding, "Workbook", "Club"});
    writer.writeLine({"Venue", info.venue, padding, padding, "Worksheet", "Lap by lap"});
    writer.writeLine({"Vehicle", info.vehicle, padding, padding, "Vehicle Desc", empty});
    writer.writeLine({"Driver", info.driver, padding, padding, "Engine ID", empty});
    writer.writeLine({"Device", "Logger 8", padding, padding, "Session", info.session});
    writer.writeLine({"Comment", empty, padding, padding, "Origin Time", decimal(0.0, shape), "s"});
    writer.writeLine({"Log Date", "14/06/2025", padding, padding, "Start Time", decimal(0.0, shape), "s"});
    // A narrow no-break space stands before AM and PM in the times of present-day systems.
    writer.writeLine({"Log Time", shape.isQuoted ? "2:35:07\xe2\x80\xafPM" : "14:35:07", padding, padding, "End Time",
                      decimal(duration, shape), "s"});
    writer.writeLine({"Sample Rate", decimal(rate, shape), "Hz", padding, "Duration", decimal(duration, shape), "s"});
    if (!info.lineCrossings.empty()) {
        QByteArray marks;
        for (const double crossing : info.lineCrossings)
            marks += decimal(crossing, shape, 4) + ' ';
        writer.writeLine({"Range", "entire outing"});
        writer.writeLine({"Beacon Markers", marks});
    }
    writer.writeGap();
    QList<QByteArray> names;
    QList<QByteArray> units;
    for (const Channel &column : columns) {
        names += column.name;
        units += column.unit;
    }
    writer.writeLine(names);
    writer.writeLine(units);
    writer.writeGap();
}

} // namespace

std::vector<Channel> csvColumns(quint64 seed, int count, CsvStyle style)
{
    if (!shapeOf(style).isQuoted)
        return loggerChannels(seed, count);
    std::vector<Channel> columns = loggerChannels(seed, std::max(count - 1, 0));
    for (Channel &column : columns) {
        if (column.name == "Gear")
            column.unit = "..";
    }
    columns.push_back({"Time", "min", 4, [](const CarState &state) { return state.time / 60.0; }});
    return columns;
}

void writeCsv(Inspect::BlockWriter &file, Drive &drive, const std::vector<Channel> &columns, const LogInfo &info,
              int rate, CsvStyle style)
{
    const ExportShape shape = shapeOf(style);
    const qint64 rows = drive.sampleCount(rate);
    ExportWriter writer(file, shape);
    writeHead(writer, drive, columns, info, rate, shape);
    for (qint64 row = 0; row < rows && !file.isFull(); ++row)
        writeRow(writer, drive.at(row, rate), columns, shape);
}

qint64 csvRowsForSize(Drive &drive, const std::vector<Channel> &columns, int rate, CsvStyle style, qint64 sizeBytes)
{
    constexpr qint64 triedRows = 120; // spread over some laps
    QBuffer rows;
    rows.open(QIODevice::WriteOnly);
    Inspect::BlockWriter file(rows);
    ExportWriter writer(file, shapeOf(style));
    for (qint64 row = 0; row < triedRows; ++row)
        writeRow(writer, drive.at(row * (rate + 1), rate), columns, shapeOf(style));
    (void)file.flush(); // into memory
    return std::max(sizeBytes * triedRows / std::max<qint64>(rows.size(), 1), qint64(1));
}

} // namespace samples
