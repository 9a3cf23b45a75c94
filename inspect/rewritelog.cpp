#include "inspect/rewritelog.h"

#include "inspect/binarylog.h"
#include "inspect/rewriteerror.h"
#include "inspect/words.h"
#include "ld/resample.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryFile>

#include <algorithm>
#include <cmath>
#include <span>

namespace Inspect {

namespace {

constexpr qint64 maxFileBytes = qint64{1} << 56;          // sparse files can claim more
constexpr qint64 keptRows = rewriteRate;                  // a channel that ends so much early keeps its last value
constexpr std::size_t blockBytes = std::size_t{16} << 20; // of samples that are turned from columns into rows
constexpr qint64 maxRows = qint64{7} * 24 * 3600 * rewriteRate; // a week
constexpr qint64 maxSamplesPerByte = 40; // of the file; 30 is what one sample per second comes to
constexpr float timeTolerance = 0.01F;   // s, of a channel that is the time of the log

// Samples at the common rate, channel after channel, in a file that nobody else sees.
class Spool
{
public:
    explicit Spool(const QString &folder)
        : file(folder + QLatin1String("/orva-XXXXXX"))
        , writer(file)
    {
        if (!file.open())
            throw RewriteError(
                QStringLiteral("no temporary file can be made in %1 (%2)").arg(folder, file.errorString()));
    }

    void add(const std::vector<float> &samples)
    {
        writer.write(
            {reinterpret_cast<const char *>(samples.data()), static_cast<qsizetype>(samples.size() * sizeof(float))});
    }

    /// What is read from now on is all that has been added.
    void finish()
    {
        if (!writer.flush() || !file.flush())
            fail(writer.errorText());
    }

    /// The samples from @p index on, counted over all channels.
    void read(qint64 index, std::span<float> samples)
    {
        const auto bytes = static_cast<qint64>(samples.size_bytes());
        if (!file.seek(index * qint64{sizeof(float)}) ||
            file.read(reinterpret_cast<char *>(samples.data()), bytes) != bytes)
            fail(file.errorString());
    }

private:
    [[noreturn]] void fail(const QString &why) const
    {
        throw RewriteError(QStringLiteral("the temporary file %1 fails (%2)").arg(file.fileName(), why));
    }

    QTemporaryFile file;
    BlockWriter writer;
};

// A position at the common rate. Where it starts again nothing lies between two samples.
std::vector<float> resampledPosition(const std::vector<float> &samples, int rate, double scale)
{
    std::vector<float> position(static_cast<std::size_t>(resampledLength(std::ssize(samples), rate, rewriteRate)));
    float held = 0.0F;
    for (std::size_t i = 0; i < position.size(); ++i) {
        const double at = static_cast<double>(i) * rate / rewriteRate;
        const auto lower = std::min(static_cast<std::size_t>(at), samples.size() - 1);
        const std::size_t upper = std::min(lower + 1, samples.size() - 1);
        const double from = samples[lower] * scale;
        const double to = samples[upper] * scale;
        const bool isFrom = from - to > halfLapPercent || !std::isfinite(to);
        const double value = isFrom ? from : from + (to - from) * (at - std::floor(at));
        if (std::isfinite(value))
            held = static_cast<float>(value);
        position[i] = held; // a sample without a value does not end a lap
    }
    return position;
}

// Whether @p samples are the time since the start of the log, or since any other moment.
bool isClock(const std::vector<float> &samples, int rate)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const float expected = samples.front() + static_cast<float>(static_cast<double>(i) / rate);
        if (!(std::abs(samples[i] - expected) <= timeTolerance))
            return false;
    }
    return true;
}

class LogRewriter
{
public:
    explicit LogRewriter(RewriteJob &rewriteJob)
        : job(rewriteJob)
        , log(rewriteJob.options.sourcePath)
        , writer(rewriteJob.file, ExportShape())
        , spool(QFileInfo(rewriteJob.options.targetPath).absolutePath())
    {
    }

    void run()
    {
        if (!log.isOpen())
            throw RewriteError(QStringLiteral("cannot be opened (%1)").arg(log.errorString()));
        chooseRecords();
        LapPlan plan(survey());
        fillSpool(plan);
        write(plan);
        describe();
        describeOrigins(plan, &job.summary);
    }

private:
    struct Column
    {
        qint64 first = 0; // in the spool
        qint64 length = 0;
        QString title;
        QString unit;
    };

    void chooseRecords()
    {
        QStringList unreadable;
        qint64 budget = std::min(log.fileBytes(), maxFileBytes) * maxSamplesPerByte;
        for (const BinaryRecord &record : log.records()) {
            const qint64 length = lengthOf(record);
            if (length > maxRows || length > budget) {
                unreadable.append(QStringLiteral("\"%1\" (too long for a log of this size)").arg(record.name));
                continue;
            }
            budget -= length;
            if (length == 0) {
                if (record.claimedSamples() > 0)
                    unreadable.append(QStringLiteral("\"%1\" (%2)")
                                          .arg(record.name, record.rate() == 0 ? QStringLiteral("no sample rate")
                                                            : record.passedOver == PassedOver::No
                                                                ? QStringLiteral("its samples are missing")
                                                                : record.kindText()));
                continue;
            }
            records.push_back(&record);
            titles.append(record.name);
            units.append(record.unit);
            rowCount = std::max(rowCount, length);
        }
        if (records.empty())
            throw RewriteError(QStringLiteral("no channel that can be read"));
        if (!unreadable.isEmpty())
            job.summary.remarks.append(QLatin1String("records that cannot be read are left out: ") +
                                       unreadable.join(QLatin1String(", ")));
    }

    LapClues survey()
    {
        LapClues clues;
        clues.lastTime = static_cast<double>(rowCount - 1) / rewriteRate;
        clues.period = 1.0 / rewriteRate;
        for (const LapChannel &channel : lapChannels(titles, units, job.options.mappings)) {
            if (channel.role == LapRole::Time)
                continue;
            LapChannelSurvey &survey = clues.channels.emplace_back(channel);
            const BinaryRecord &record = *records[channel.column];
            const std::vector<float> samples = log.samples(record);
            for (std::size_t i = 0; i < samples.size(); ++i)
                survey.add(static_cast<double>(i) / record.rate(), static_cast<double>(samples[i]));
        }
        if (job.options.lapsAt)
            clues.userMarks = LapMarks{QStringLiteral("--laps-at"), *job.options.lapsAt};
        clues.marks = {sidecarMarks(job.sidecar)};
        return clues;
    }

    void fillSpool(const LapPlan &plan)
    {
        const DrivingSource &position = plan.source(LapRole::Position);
        if (position.kind == DrivingSource::Kind::Channel) {
            const BinaryRecord &record = *records[*position.column];
            std::vector<float> samples = resampledPosition(log.samples(record), record.rate(), position.scale);
            samples.resize(static_cast<std::size_t>(rowCount), samples.back()); // a missing position would read as 0
            addColumn(std::move(samples), {}, {});
        }
        hasClock = false;
        for (qsizetype i = 0; i < titles.size() && !hasClock; ++i) {
            const BinaryRecord &record = *records[static_cast<std::size_t>(i)];
            hasClock = valueName(titles[i]) == QLatin1String("time") && record.unit == QLatin1String("s") &&
                       lengthOf(record) == rowCount && isClock(log.samples(record), record.rate());
        }
        if (!hasClock) {
            ownTitles.append(QStringLiteral("Time"));
            ownUnits.append(QStringLiteral("s"));
        }
        const Progress progress(job.options.progress, 0.0, 0.4);
        const auto written = writtenColumns(titles, units, plan, ownTitles, &job.summary.remarks);
        for (std::size_t i = 0; i < written.size(); ++i) {
            const BinaryRecord &record = *records[written[i].source];
            std::vector<float> samples = log.samples(record);
            if (record.rate() != rewriteRate)
                samples = resample(samples, record.rate(), rewriteRate);
            samples.resize(static_cast<std::size_t>(lengthOf(record)));
            addColumn(std::move(samples), written[i].title, written[i].unit);
            progress.tell(static_cast<double>(i) / static_cast<double>(written.size()));
        }
        spool.finish();
        // Rows get shorter as channels end, so those that end first come last.
        const auto begin = columns.begin() + (position.kind == DrivingSource::Kind::Channel ? 1 : 0);
        std::stable_sort(begin, columns.end(),
                         [](const Column &one, const Column &other) { return one.length > other.length; });
        const auto ending = std::find_if(columns.begin(), columns.end(),
                                         [this](const Column &column) { return column.length < rowCount; });
        if (ending != columns.end())
            job.summary.remarks.append(
                QStringLiteral("%1 before the last row, the first at %2 s; rows after the end of a channel have no "
                               "value for it")
                    .arg(
                        counted(columns.end() - ending, QStringLiteral("channel ends"), QStringLiteral("channels end")))
                    .arg(static_cast<double>(columns.back().length) / rewriteRate, 0, 'f', 3));
    }

    // Rows up to the last sample. What resample() gives after that repeats it.
    static qint64 lengthOf(const BinaryRecord &record)
    {
        const qint64 resampled = resampledLength(record.readableSamples, record.rate(), rewriteRate);
        return resampled == 0 ? 0 : std::min(resampled, (record.readableSamples - 1) * rewriteRate / record.rate() + 1);
    }

    void addColumn(std::vector<float> samples, const QString &title, const QString &unit)
    {
        if (rowCount - std::ssize(samples) <= keptRows)
            samples.resize(static_cast<std::size_t>(rowCount), samples.back());
        columns.push_back({spooled, std::ssize(samples), title, unit});
        spool.add(samples);
        spooled += std::ssize(samples);
    }

    void write(LapPlan &plan)
    {
        const bool hasPosition = plan.source(LapRole::Position).kind == DrivingSource::Kind::Channel;
        const std::span<const Column> channels = std::span<const Column>(columns).subspan(hasPosition ? 1 : 0);
        std::vector<WrittenColumn> titlesOfColumns;
        for (const Column &column : channels)
            titlesOfColumns.push_back({0, column.title, column.unit});
        writeHeader(plan);
        writeColumnRows(writer, plan, ownTitles, ownUnits, titlesOfColumns);
        job.summary.channels = static_cast<qsizetype>(channels.size()) + ownTitles.size();

        const Progress progress(job.options.progress, 0.4, 1.0);
        DrivingCells cells(plan);
        const auto rowsOfBlock =
            static_cast<qint64>(std::max(blockBytes / sizeof(float) / columns.size(), std::size_t{1}));
        std::vector<float> block(static_cast<std::size_t>(rowsOfBlock) * columns.size());
        const auto closing = plan.closingTime();
        for (qint64 begin = 0; begin < rowCount && !job.file.isFull(); begin += rowsOfBlock) {
            const qint64 end = std::min(begin + rowsOfBlock, rowCount);
            for (std::size_t i = 0; i < columns.size(); ++i) {
                const qint64 stop = std::min(end, columns[i].length);
                if (stop > begin)
                    spool.read(columns[i].first + begin,
                               std::span(block).subspan(i * static_cast<std::size_t>(rowsOfBlock),
                                                        static_cast<std::size_t>(stop - begin)));
            }
            for (qint64 row = begin; row < end; ++row)
                writeRow(plan, cells, block, rowsOfBlock, row, row - begin, static_cast<double>(row) / rewriteRate);
            if (end == rowCount && closing) {
                writeRow(plan, cells, block, rowsOfBlock, rowCount - 1, rowCount - 1 - begin, *closing);
                job.summary.remarks.append(closingRemark(*closing));
            }
            progress.tell(static_cast<double>(end) / static_cast<double>(rowCount));
        }
        if (notFinite > 0)
            job.summary.remarks.append(
                QStringLiteral("%1 NaN or infinite in the source: now empty, which the import reads as 0")
                    .arg(counted(notFinite, QStringLiteral("sample is"), QStringLiteral("samples are"))));
    }

    void writeRow(LapPlan &plan, DrivingCells &cells, const std::vector<float> &block, qint64 rowsOfBlock, qint64 row,
                  qint64 rowOfBlock, double time)
    {
        writer.beginRow(columns.size() + drivingRoles.size() + 1,
                        (columns.size() + drivingRoles.size() + 1) * ExportWriter::cellRoom);
        std::size_t column = 0;
        const auto sample = [&] {
            return block[column * static_cast<std::size_t>(rowsOfBlock) + static_cast<std::size_t>(rowOfBlock)];
        };
        for (const LapRole role : drivingRoles) {
            if (plan.source(role).kind == DrivingSource::Kind::Channel) {
                if (plan.isAtLine(time))
                    cells.add(writer, role, time);
                else if (row < columns[column].length)
                    writer.addRounded(static_cast<double>(sample()), 6);
                ++column;
            } else if (plan.isWritten(role)) {
                cells.add(writer, role, time);
            }
        }
        if (!hasClock)
            writer.addRounded(time, 6);
        for (; column < columns.size() && row < columns[column].length; ++column) {
            const float value = sample();
            if (std::isfinite(value)) {
                writer.addNumber(value);
            } else {
                writer.addText({});
                ++notFinite;
            }
        }
        writer.endRow();
        ++job.summary.rows;
    }

    void writeHeader(const LapPlan &plan)
    {
        const BinaryHead &head = log.head();
        writer.writeLine({"Venue", cellText(head.venue)});
        writer.writeLine({"Vehicle", cellText(head.vehicle)});
        writer.writeLine({"Driver", cellText(head.driver)});
        writer.writeLine({"Session", cellText(head.session)});
        writer.writeLine({"Sample Rate", "60.000", "Hz"});
        writeBeaconMarkers(writer, plan);
        job.sessionWord = head.session;
    }

    void describe()
    {
        const auto [slowest, fastest] =
            std::minmax_element(records.begin(), records.end(),
                                [](const auto *one, const auto *other) { return one->rate() < other->rate(); });
        job.summary.source = QStringLiteral("binary .ld log, %1 that can be read, %2 to %3 samples per second")
                                 .arg(counted(std::ssize(records), QStringLiteral("record")))
                                 .arg((*slowest)->rate())
                                 .arg((*fastest)->rate());
        job.summary.rate = QStringLiteral("each channel is interpolated in time from its own rate, without a filter");
    }

    RewriteJob &job;
    BinaryLog log;
    ExportWriter writer;
    Spool spool;
    std::vector<const BinaryRecord *> records; // those that are written
    QStringList titles;
    QStringList units;
    qint64 rowCount = 0;
    bool hasClock = false; // one of the channels is the time
    QStringList ownTitles;
    QStringList ownUnits;
    std::vector<Column> columns; // a position that is taken from a channel first
    qint64 spooled = 0;
    qint64 notFinite = 0;
};

} // namespace

void rewriteBinaryLog(RewriteJob &job)
{
    LogRewriter(job).run();
}

} // namespace Inspect
