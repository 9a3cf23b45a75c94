#include "host/storedlog.h"

#include "csv/csvtext.h"
#include "host/exactnumber.h"
#include "host/failure.h"
#include "host/jsonwriter.h"
#include "host/laps.h"
#include "host/output.h"
#include "host/textformat.h"
#include "host/texttable.h"
#include "host/valuetable.h"
#include "inspect/binarylog.h"
#include "inspect/textlog.h"

#include <algorithm>
#include <cmath>
#include <vector>

using Inspect::BinaryLog;
using Inspect::BinaryRecord;
using Inspect::PassedOver;
using Inspect::TextLog;
using Side = Host::Column::Side;

namespace Host {

namespace {

struct StoredChannel
{
    QString name;
    QString unit;
    double rate = 0.0;                    // samples per second; 0 if not known
    qint64 samples = 0;                   // as the file claims
    qint64 readable = 0;                  // that are there and are numbers
    std::optional<Range> range;           // of these
    const BinaryRecord *record = nullptr; // of a .ld log
};

struct StoredLog
{
    QString path;
    QString venue;
    QString vehicle;
    QString driver;
    QString session;
    std::vector<StoredChannel> channels;
};

template <typename File>
void checkOpen(const QString &path, const File &file)
{
    if (!file.isOpen())
        throw Failure(QStringLiteral("%1: cannot be opened: %2").arg(path, file.errorString()));
}

void extend(std::optional<Range> &range, double sample)
{
    if (!std::isfinite(sample))
        return;
    if (range)
        range = Range{std::min(range->minimum, sample), std::max(range->maximum, sample)};
    else
        range = Range{sample, sample};
}

StoredLog storedLog(const QString &path, BinaryLog &file)
{
    StoredLog log{path, file.head().venue, file.head().vehicle, file.head().driver, file.head().session, {}};
    for (const BinaryRecord &record : file.records()) {
        StoredChannel channel{
            record.name, record.unit, double(record.rate()), record.claimedSamples(), record.readableSamples,
            {},          &record};
        for (const float sample : file.samples(record))
            extend(channel.range, double{sample});
        log.channels.push_back(std::move(channel));
    }
    return log;
}

StoredLog storedLog(const QString &path, TextLog &file)
{
    const Inspect::TextPreamble &head = file.preamble();
    StoredLog log{path, head.value(u"Venue"), head.value(u"Vehicle"), head.value(u"Driver"), head.value(u"Session"),
                  {}};
    for (const Inspect::TextColumn &column : file.columns())
        log.channels.push_back({column.title, column.unit, head.sampleRate(), 0, 0, {}, nullptr});
    while (file.nextRow()) {
        const auto cells = file.cells();
        for (std::size_t i = 0; i < std::min(cells.size(), log.channels.size()); ++i) {
            StoredChannel &channel = log.channels[i];
            ++channel.samples;
            if (const auto number = Inspect::numberIn(cells[i])) {
                ++channel.readable;
                extend(channel.range, *number);
            }
        }
    }
    return log;
}

// Whether the import reads a record, for people and as data.
struct ImportText
{
    QString text;
    QLatin1String code;
};

ImportText importText(PassedOver reason)
{
    switch (reason) {
    case PassedOver::TypeCode:
        return {QStringLiteral("skipped: type"), QLatin1String("type")};
    case PassedOver::NoRate:
        return {QStringLiteral("skipped: no rate"), QLatin1String("no-rate")};
    case PassedOver::SampleWidth:
        return {QStringLiteral("skipped: width"), QLatin1String("width")};
    case PassedOver::NoSamples:
        return {QStringLiteral("skipped: no samples"), QLatin1String("no-samples")};
    case PassedOver::SameName:
        return {QStringLiteral("skipped: name is taken"), QLatin1String("same-name")};
    case PassedOver::No:
        break;
    }
    return {QStringLiteral("read"), {}};
}

void printTable(const StoredLog &log, bool isBinary, Output &output)
{
    output.writeText(QStringLiteral("%1 in the file: %2\n\n")
                         .arg(isBinary ? QStringLiteral("Records") : QStringLiteral("Columns"))
                         .arg(log.channels.size()));
    std::vector<Column> columns{{QStringLiteral("Name")},
                                {QStringLiteral("Unit")},
                                {QStringLiteral("Rate"), Side::Right},
                                {QStringLiteral("Samples"), Side::Right},
                                {QStringLiteral("Readable"), Side::Right},
                                {QStringLiteral("Minimum"), Side::Right},
                                {QStringLiteral("Maximum"), Side::Right}};
    if (isBinary) {
        columns.push_back({QStringLiteral("Type")});
        columns.push_back({QStringLiteral("Import")});
    }
    TextTable table(columns);
    for (const StoredChannel &channel : log.channels) {
        QStringList cells{orDash(channel.name),
                          orDash(channel.unit),
                          orDash(channel.rate > 0.0 ? roundedNumber(channel.rate) : QString()),
                          QString::number(channel.samples),
                          QString::number(channel.readable),
                          orDash(channel.range ? roundedNumber(channel.range->minimum) : QString()),
                          orDash(channel.range ? roundedNumber(channel.range->maximum) : QString())};
        if (channel.record)
            cells << channel.record->kindText() << importText(channel.record->passedOver).text;
        table.addRow(cells);
    }
    table.print(output);
}

void writeChannel(const StoredChannel &channel, JsonWriter &json)
{
    json.member("name", channel.name);
    json.member("unit", channel.unit);
    json.member("sampleRate", channel.rate > 0.0 ? std::optional(channel.rate) : std::nullopt);
    json.member("samples", channel.samples);
    json.member("readableSamples", channel.readable);
    const auto writeBound = [&](const char *name, double Range::*which) {
        if (channel.range && channel.record)
            json.member(name, static_cast<float>((*channel.range).*which)); // as short as the samples, which are floats
        else
            json.member(name, channel.range ? std::optional((*channel.range).*which) : std::nullopt);
    };
    writeBound("minimum", &Range::minimum);
    writeBound("maximum", &Range::maximum);
    if (const BinaryRecord *record = channel.record) {
        const PassedOver reason = record->passedOver;
        json.member("type", record->kindText());
        json.member("typeCode", quint16{record->header.typeCode});
        json.member("sampleWidth", quint16{record->header.sampleWidth});
        json.member("skipped", reason == PassedOver::No ? std::nullopt : std::optional(importText(reason).code));
    }
}

// The object for @p command, with each channel's samples written by @p writeValues where there is such a function.
template <typename WriteValues>
void printObject(const char *command, const StoredLog &log, Output &output, const WriteValues &writeValues)
{
    JsonWriter json(output);
    json.startObject();
    json.member("command", QLatin1String(command));
    json.member("file", log.path);
    json.member("venueName", log.venue);
    json.member("carName", log.vehicle);
    json.member("driverName", log.driver);
    json.member("sessionName", log.session);
    json.key("stored");
    json.startArray();
    for (std::size_t i = 0; i < log.channels.size(); ++i) {
        json.startObject();
        writeChannel(log.channels[i], json);
        writeValues(i, json);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    json.end();
}

// Which of the channels called @p all the names ask for, in the order of the names; all if there are none.
std::vector<std::size_t> selected(const QString &path, const QStringList &all, const QStringList &names)
{
    std::vector<std::size_t> indices;
    const auto addAll = [&](const auto &isWanted) {
        for (qsizetype i = 0; i < all.size(); ++i) {
            if (isWanted(all[i]))
                indices.push_back(static_cast<std::size_t>(i));
        }
    };
    if (names.isEmpty())
        addAll([](const QString &) { return true; });
    for (const QString &name : names) {
        const std::size_t before = indices.size();
        addAll([&name](const QString &other) { return other == name; });
        if (indices.size() > before)
            continue;
        const auto similar = std::find_if(all.begin(), all.end(), [&name](const QString &other) {
            return Csv::valueName(other) == Csv::valueName(name);
        });
        throw Failure(QStringLiteral("%1: no channel \"%2\" in the file, %3")
                          .arg(path, name,
                               similar != all.end()
                                   ? QStringLiteral("did you mean \"%1\"?").arg(*similar)
                                   : QStringLiteral("\"orva-host channels --stored\" lists its channels")));
    }
    return indices;
}

// Samples at one rate on their way out.
struct RateGroup
{
    qint64 rate;
    qint64 count;    // samples of the longest channel
    qint64 next = 0; // sample whose turn it is
    bool isDue = false;

    bool isBefore(const RateGroup &other) const { return next * other.rate < other.next * rate; }
};

// Marks the groups whose next sample is the earliest; null if all are through.
const RateGroup *markDue(std::vector<RateGroup> &groups)
{
    const RateGroup *earliest = nullptr;
    for (const RateGroup &group : groups) {
        if (group.next < group.count && (!earliest || group.isBefore(*earliest)))
            earliest = &group;
    }
    for (RateGroup &group : groups)
        group.isDue = earliest && group.next < group.count && !earliest->isBefore(group);
    return earliest;
}

struct TimedChannel
{
    std::vector<float> samples;
    std::size_t group;
};

void printRows(const std::vector<TimedChannel> &channels, std::vector<RateGroup> &groups, Output &output)
{
    QByteArray line;
    while (const RateGroup *earliest = markDue(groups)) {
        line = exactNumber(static_cast<double>(earliest->next) / static_cast<double>(earliest->rate));
        for (const TimedChannel &channel : channels) {
            const RateGroup &group = groups[channel.group];
            line += ',';
            if (group.isDue && group.next < std::ssize(channel.samples))
                line += exactNumber(channel.samples[static_cast<std::size_t>(group.next)]);
        }
        output.write(line += '\n');
        for (RateGroup &group : groups)
            group.next += group.isDue ? 1 : 0;
    }
}

void printBinaryValues(BinaryLog &file, const std::vector<std::size_t> &indices, Output &output)
{
    QStringList header{QStringLiteral("time")};
    std::vector<TimedChannel> channels;
    std::vector<RateGroup> groups;
    for (const std::size_t index : indices) {
        const BinaryRecord &record = file.records()[index];
        if (record.rate() == 0)
            continue; // at no instant that could be told
        header.append(record.name);
        auto group = std::find_if(groups.begin(), groups.end(), [&](const auto &g) { return g.rate == record.rate(); });
        if (group == groups.end())
            group = groups.insert(group, {record.rate(), 0});
        channels.push_back({file.samples(record), static_cast<std::size_t>(group - groups.begin())});
        group->count = std::max<qint64>(group->count, std::ssize(channels.back().samples));
    }
    output.writeText(headerLine(header));
    printRows(channels, groups, output);
}

void printTextValues(TextLog &file, const std::vector<std::size_t> &indices, Output &output)
{
    QStringList header;
    for (const std::size_t index : indices)
        header.append(file.columns()[index].title);
    output.writeText(headerLine(header));
    QByteArray line;
    while (!indices.empty() && file.nextRow()) {
        const auto cells = file.cells();
        line.clear();
        for (const std::size_t index : indices) {
            if (const auto number = index < cells.size() ? Inspect::numberIn(cells[index]) : std::nullopt)
                line += exactNumber(*number);
            line += ',';
        }
        line.back() = '\n';
        output.write(line);
    }
}

// The numbers of the columns @p indices, NaN where a cell is not a number.
std::vector<std::vector<double>> columnNumbers(TextLog &file, const std::vector<std::size_t> &indices)
{
    std::vector<std::vector<double>> columns(indices.size());
    while (file.nextRow()) {
        const auto cells = file.cells();
        for (std::size_t i = 0; i < indices.size(); ++i) {
            const auto number = indices[i] < cells.size() ? Inspect::numberIn(cells[indices[i]]) : std::nullopt;
            columns[i].push_back(number.value_or(std::nan("")));
        }
    }
    return columns;
}

QStringList titles(const TextLog &file)
{
    QStringList names;
    for (const Inspect::TextColumn &column : file.columns())
        names.append(column.title);
    return names;
}

// Leaves the channels @p indices alone in @p log, in their order.
void keep(StoredLog &log, const std::vector<std::size_t> &indices)
{
    std::vector<StoredChannel> kept;
    for (const std::size_t index : indices)
        kept.push_back(log.channels[index]);
    log.channels = std::move(kept);
}

} // namespace

bool hasStoredChannels(const QString &path, LogFormat format)
{
    if (format == LogFormat::Binary) {
        const BinaryLog file(path);
        checkOpen(path, file);
        return !file.records().empty();
    }
    const TextLog file(path);
    checkOpen(path, file);
    return !file.columns().empty();
}

void printStoredChannels(const QString &path, LogFormat format, bool isJson, Output &output)
{
    const auto print = [&](const StoredLog &log) {
        if (isJson)
            printObject("channels", log, output, [](std::size_t, JsonWriter &) {});
        else
            printTable(log, format == LogFormat::Binary, output);
    };
    if (format == LogFormat::Binary) {
        BinaryLog file(path);
        checkOpen(path, file);
        print(storedLog(path, file));
    } else {
        TextLog file(path);
        checkOpen(path, file);
        print(storedLog(path, file));
    }
}

void printStoredValues(const QString &path, LogFormat format, const QStringList &names, bool isJson, Output &output)
{
    if (format == LogFormat::Binary) {
        BinaryLog file(path);
        checkOpen(path, file);
        QStringList all;
        for (const BinaryRecord &record : file.records())
            all.append(record.name);
        const auto indices = selected(path, all, names);
        if (!isJson)
            return printBinaryValues(file, indices, output);
        StoredLog log = storedLog(path, file);
        keep(log, indices);
        printObject("values", log, output, [&](std::size_t i, JsonWriter &json) {
            json.key("values");
            json.samples(file.samples(*log.channels[i].record));
        });
    } else {
        TextLog file(path);
        checkOpen(path, file);
        const auto indices = selected(path, titles(file), names);
        if (!isJson)
            return printTextValues(file, indices, output);
        StoredLog log = storedLog(path, file);
        keep(log, indices);
        TextLog again(path);
        checkOpen(path, again);
        const auto columns = columnNumbers(again, indices);
        printObject("values", log, output, [&](std::size_t i, JsonWriter &json) {
            json.key("values");
            json.samples(columns[i]);
        });
    }
}

} // namespace Host
