#include "csv/orvareader.h"

#include "csv/columnplan.h"
#include "csv/csvrow.h"
#include "csv/importbudget.h"
#include "csv/linereader.h"
#include "csv/rowstage.h"
#include "ld/ldx.h"
#include "sdk/channelutils.h"
#include "sdk/lapchannels.h"
#include "sdk/regularfile.h"
#include "sdk/sdk_utils.h"
#include "sdk/wholenumber.h"

#include <QtCore/QFile>
#include <QtCore/QTime>
#include <QtCore/QUuid>

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

using KOV::SDK::Channel;
using KOV::SDK::ChannelUtils;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;
using KOV::SDK::Session;
using KOV::SDK::Value;
namespace LapChannels = KOV::SDK::LapChannels;

namespace {

constexpr double lapCutFall = 0.75;          // of a lap: a larger fall of the distance is the start of a new lap
constexpr int decimation = 6;                // a 360-per-second export is thinned to 60 per second
constexpr long long laterRoom = 32;          // a lap gets room for one part in so many more rows than the one before
constexpr long long spareRoom = 16;          // one part in so many of a finished lap's room may stay empty
constexpr long long maxReserved = 1LL << 26; // samples, over all channels, that get room before their rows come

QString withoutQuotes(QString line)
{
    return line.remove(u'"');
}

// The logged time of the previous lap, in seconds: the last positive sample, since it is written some rows into the
// lap.
double loggedLapTime(const Channel &channel)
{
    for (long long i = channel.size() - 1; i >= 0; --i) {
        if (channel.isValid(i) && channel.value(i) > 0.0)
            return channel.value(i);
    }
    return KOV::SDK::invalidValue;
}

// Seconds from a file as milliseconds, with the fraction dropped. Values outside the range of int are clamped: their
// conversion would be undefined.
int wholeMilliseconds(double seconds)
{
    constexpr double millisecondsPerSecond = 1000.0;
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(seconds * millisecondsPerSecond, lowest, highest));
}

// The data rows that an import reads: all of them, or every sixth of those that are not empty.
class KeptRows
{
public:
    KeptRows(Csv::LineReader *lines, bool decimate)
        : lines(lines)
        , decimate(decimate)
    {
    }

    bool next()
    {
        while (lines->next()) {
            if (!decimate)
                return true;
            if (lines->bytes() && Csv::isEmptyRow(*lines->bytes()))
                continue;
            const bool isKept = rowCounter == 0;
            rowCounter = (rowCounter + 1) % decimation;
            if (isKept)
                return true;
        }
        return false;
    }

private:
    Csv::LineReader *lines;
    bool decimate;
    int rowCounter = 0;
};

} // namespace

ORVAReader::ORVAReader(QObject *parent)
    : QObject(parent)
{
}

void ORVAReader::fixLapTime(Lap *lap)
{
    const auto lapTime = lap->channel(LapChannels::currentTime);
    const auto lapDistance = lap->channel(LapChannels::distance);
    if (lapTime && lapDistance)
        ChannelUtils::normalizeChannelBeginning(lapTime.get(), lapDistance.get());
}

QList<QSharedPointer<Lap>> ORVAReader::importLaps(const QString &path)
{
    lastLapDistPct = 0.0;
    decimate = false;
    laps.clear();
    session = Session::UnknownSession;

    QFile file(path);
    if (KOV::SDK::openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        const QString sidecar = sidecarPath(path);
        session = loadSession(sidecar);
        const QMap<QString, Value> ldxValues = loadValues(sidecar);
        startStint();
        lap.header().sessionId = QUuid::createUuid();

        Csv::LineReader lines(&file);
        Csv::ColumnPlan plan;
        if (readPreamble(lines, &plan))
            readRows(lines, plan, file.size(), ldxValues.size());
        processLap(false);

        for (const QSharedPointer<Lap> &done : std::as_const(laps)) {
            for (auto entry = ldxValues.cbegin(); entry != ldxValues.cend(); ++entry)
                done->header().dynamicData.setValue(entry.key(), entry.value());
        }
        setLapTimes();
    }

    Q_EMIT message(QLatin1String("Done; Laps read ") + QString::number(laps.size()), 0);
    return laps;
}

// Reads up to the first data row; false if the file ends before.
bool ORVAReader::readPreamble(Csv::LineReader &lines, Csv::ColumnPlan *plan)
{
    enum class Block
    {
        Header,
        Columns
    };
    auto block = Block::Header;
    while (lines.next()) {
        const QString line = lines.text();
        if (block == Block::Header) {
            if (line.isEmpty())
                block = Block::Columns;
            else
                processHeader(withoutQuotes(line));
        } else if (!plan->hasNames()) {
            if (!line.isEmpty())
                plan->setNames(withoutQuotes(line));
        } else if (!plan->hasUnits()) {
            plan->setUnits(withoutQuotes(line));
        } else {
            return true; // this line separates the columns from the data and says nothing
        }
    }
    return false;
}

void ORVAReader::readRows(Csv::LineReader &lines, const Csv::ColumnPlan &plan, qint64 fileSize, qint64 valuesPerLap)
{
    Csv::ImportBudget budget(fileSize, valuesPerLap);
    Csv::RowStage stage(&plan);
    const Csv::FieldGroupReader readGroups = Csv::fieldGroupReader();
    for (KeptRows rows(&lines, decimate); rows.next();) {
        const std::span<double> row = stage.row();
        const std::size_t fieldCount = Csv::readRow(lines, row, readGroups);
        if (fieldCount == 0)
            continue;
        const double lapDistance = stage.lapDistanceField(fieldCount) * LapChannels::percent;
        const bool startsLap = isLapCut(lapDistance);
        const long long channelCount = plan.nameCount(fieldCount);
        const long long newChannels = channelCount - plan.nameCount(stage.width());
        if (fieldCount <= stage.width() && !startsLap) {
            if (!budget.takePadding(-newChannels))
                break;
            lastLapDistPct = lapDistance;
            stage.commit(fieldCount, lapDistance);
            continue;
        }

        stage.flush();
        const bool isWithinBudget =
            startsLap || lap.isEmpty() ? budget.takeLap(channelCount) : budget.takeChannels(newChannels, lap.size());
        if (!isWithinBudget)
            break;
        enterRow(plan, row.first(fieldCount));
        processData();
        stage.bind(&lap, fieldCount, expectedRows(lines, plan, fileSize));
    }
    stage.flush();
}

void ORVAReader::enterRow(const Csv::ColumnPlan &plan, std::span<const double> numbers)
{
    sample.dynamicData.clear();
    for (std::size_t column = 0; column < numbers.size(); ++column)
        sample.dynamicData.setValue(plan.name(column), numbers[column], plan.unit(column));
}

// A little more than the last lap had, since laps of one log are much the same length; for the first lap what the whole
// file may hold. Growing step by step is slow, and room that is not used costs no memory.
long long ORVAReader::expectedRows(const Csv::LineReader &line, const Csv::ColumnPlan &plan, qint64 fileSize) const
{
    const auto lineBytes = line.bytes() ? static_cast<qint64>(line.bytes()->size()) + 1 : 1;
    const long long rows =
        laps.isEmpty() ? fileSize / lineBytes / (decimate ? decimation : 1) : laps.constLast()->size();
    // A complete row takes at least a digit and a comma per column: no lap has more of them, whatever the last one had.
    // A file that claims to be long, and is not, must not make the system refuse the memory.
    const auto columnCount = static_cast<long long>(plan.columnCount());
    const long long maxRows = std::min(fileSize / 2, maxReserved) / columnCount + 1;
    return std::min(rows + rows / laterRoom, maxRows);
}

void ORVAReader::processHeader(const QString &line)
{
    const qsizetype comma = line.indexOf(u',');
    if (comma < 0)
        return;
    const QStringView key = QStringView(line).first(comma);
    const qsizetype end = line.indexOf(u',', comma + 1);
    const QString value = line.mid(comma + 1, end < 0 ? -1 : end - comma - 1);
    if (key == QLatin1String("Venue"))
        venue = value;
    else if (key == QLatin1String("Vehicle"))
        vehicle = value;
    else if (key == QLatin1String("Driver"))
        driver = value;
    else if (key == QLatin1String("Sample Rate"))
        decimate = value.contains(QLatin1String("360"));
}

void ORVAReader::startStint()
{
    lapCounter = -1;
    startLap();
    LapHeader &header = lap.header();
    header.stintId = QUuid::createUuid();
    header.lapKind = KOV::SDK::outLapKind;
    header.stintNumber = 1;
}

void ORVAReader::startLap()
{
    lap.clear();
    LapHeader &header = lap.header();
    header.lapId = QUuid::createUuid();
    header.stintLapIndex = ++lapCounter;
    header.lapNumber = KOV::SDK::wholeNumber(sample.dynamicData.value(LapChannels::number));
    header.lapKind = KOV::SDK::laterLapKind;
}

double ORVAReader::sampledLapDistance() const
{
    return sample.dynamicData.value(LapChannels::distance).toDouble() * LapChannels::percent;
}

bool ORVAReader::isLapCut(double lapDistance) const
{
    return lastLapDistPct - lapDistance > lapCutFall;
}

void ORVAReader::processData()
{
    const double lapDistance = sampledLapDistance();
    sample.dynamicData.setValue(LapChannels::distance, lapDistance, QString());
    if (isLapCut(lapDistance))
        processLap(true);
    lastLapDistPct = lapDistance;
    lap.addSample(sample);
}

void ORVAReader::processLap(bool completed)
{
    LapHeader &header = lap.header();
    header.completed = completed;
    if (!completed)
        header.lapTime = KOV::SDK::placeholderLapTime();
    header.carInfo.driverName = driver;
    header.carInfo.carName = vehicle;
    header.venueName = venue;
    header.session = session;
    preprocessLap();
    if (completed || !laps.isEmpty()) // the only lap of a log got its room by the size of the file
        releaseSpareRoom();
    auto done = QSharedPointer<Lap>::create();
    *done = lap;
    laps.append(done);
    startLap();
}

void ORVAReader::preprocessLap()
{
    if (const auto lapDistance = lap.channel(LapChannels::distance))
        lapDistance->setUnit(LapChannels::distanceUnit);
}

// Channels grow ahead of their samples. A finished lap gives back spare room that exceeds a small part of its length.
void ORVAReader::releaseSpareRoom()
{
    for (const QString &name : lap.getAvailableRecordedChannels()) {
        const auto channel = lap.channel(name);
        if (channel->capacity() - channel->size() > channel->size() / spareRoom)
            channel->shrinkToFit();
    }
}

void ORVAReader::setLapTimes()
{
    for (qsizetype i = 0; i + 1 < laps.size(); ++i) {
        const auto lastLapTime = laps[i + 1]->channel(LapChannels::lastTime);
        if (!lastLapTime)
            continue;
        LapHeader &header = laps[i]->header();
        const double seconds = loggedLapTime(*lastLapTime);
        if (KOV::SDK::isValidValue(seconds))
            header.lapTime = QTime(0, 0, 0, 0).addMSecs(wholeMilliseconds(seconds));
        fixLapTime(laps[i].get());
        if (header.lapTime.isNull() || header.lapTime == QTime(0, 0, 0, 0))
            header.lapTime = KOV::SDK::placeholderLapTime();
    }
}
