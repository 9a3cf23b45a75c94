#include "ld/loadlaps.h"

#include "ld/lapbuilder.h"
#include "ld/lapcutter.h"
#include "ld/ldbudget.h"
#include "ld/ldfile.h"
#include "ld/ldx.h"
#include "ld/resample.h"
#include "sdk/regularfile.h"

#include <QtCore/QFile>
#include <QtCore/QSet>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

using KOV::SDK::Lap;
using KOV::SDK::LapHeader;
using Ld::SampleView;
using Obstacle = LdLoadReport::Obstacle;
using Reason = LdLoadReport::Reason;
namespace LapChannels = KOV::SDK::LapChannels;

namespace {

// What laps take in memory besides their samples, at most.
constexpr qint64 bytesPerLap = 720;
constexpr qint64 bytesPerLapChannel = 190;

struct RecordedChannel
{
    const LdChannelHeader *header = nullptr; // null for a channel that is missing or left out
    std::vector<float> samples;

    SampleView view() const
    {
        return !header || header->sampleRate == ldCommonRate ? SampleView(samples)
                                                             : SampleView(samples, header->sampleRate, ldCommonRate);
    }
};

// The channels of one log, read one at a time and each name once, as far as the budget allows.
class ChannelSource
{
public:
    ChannelSource(QDataStream &dataStream, LdData &data, qint64 fileBytes, LdLoadReport *loadReport)
        : stream(dataStream)
        , headers(readLdChannelHeaders(stream, data))
        , isRead(headers.size())
        , budget(fileBytes)
        , report(loadReport)
    {
        for (const LdChannelHeader &header : headers)
            names.append(ldText(header, &LdChannelHeader::name).toLower());
    }

    const QList<QString> &channelNames() const { return names; }
    bool hasReadableChannels() const
    {
        return std::any_of(headers.begin(), headers.end(),
                           [](const auto &header) { return ldSampleCount(header) > 0; });
    }

    // The channel of record index, unless it was read before or is left out.
    RecordedChannel read(qsizetype index)
    {
        const auto position = static_cast<std::size_t>(index);
        if (isRead[position])
            return {};
        isRead[position] = true;
        const LdChannelHeader &header = headers[position];
        const qint64 count = ldSampleCount(header);
        const qint64 length =
            header.sampleRate == ldCommonRate ? count : resampledLength(count, header.sampleRate, ldCommonRate);
        const qint64 cost = count * qint64{sizeof(float)} + logLength.value_or(length) * qint64{sizeof(double)} +
                            lapCount * bytesPerLapChannel;
        const std::optional<Reason> reason = length == 0                    ? std::optional(Reason::NoSamples)
                                             : taken.contains(names[index]) ? std::optional(Reason::SameName)
                                             : !budget.take(cost)           ? std::optional(Reason::Implausible)
                                                                            : std::nullopt;
        if (reason) {
            report->leftOut.append({names[index], *reason});
            return {};
        }
        taken.insert(names[index]);
        return {&header, readLdChannel(stream, header)};
    }

    RecordedChannel read(QLatin1String name)
    {
        RecordedChannel channel;
        for (qsizetype i = 0; i < names.size() && !channel.header; ++i) {
            if (names[i] == name)
                channel = read(i);
        }
        return channel;
    }

    // Samples that every channel from here on is filled up to.
    void setLogLength(qint64 samples) { logLength = samples; }

    // More laps than this do not fit with the channels read so far.
    qint64 maxLaps() const { return budget.left() / (bytesPerLap + taken.size() * bytesPerLapChannel); }
    void takeLaps(qint64 laps)
    {
        budget.take(laps * (bytesPerLap + taken.size() * bytesPerLapChannel));
        lapCount = laps;
    }

private:
    QDataStream &stream;
    std::vector<LdChannelHeader> headers;
    std::vector<bool> isRead;
    QList<QString> names; // in lower case, of the record with the same index
    QSet<QString> taken;
    Ld::Budget budget;
    LdLoadReport *report;
    std::optional<qint64> logLength;
    qint64 lapCount = 0;
};

// Whether the laps can be cut by @p channel; says in the report why not.
bool canCutBy(QLatin1String name, const RecordedChannel &channel, LdLoadReport *report)
{
    if (channel.view().size() >= ldMinSamples)
        return true;
    const bool isImplausible = std::any_of(report->leftOut.cbegin(), report->leftOut.cend(), [name](const auto &entry) {
        return entry.name == name && entry.reason == Reason::Implausible;
    });
    report->drivingChannel = name;
    report->obstacle = channel.header  ? Obstacle::ShortChannel
                       : isImplausible ? Obstacle::ImplausibleChannel
                                       : Obstacle::MissingChannel;
    return false;
}

QList<QSharedPointer<Lap>> cutChannels(ChannelSource &source, LdLoadReport *report)
{
    RecordedChannel distance = source.read(LapChannels::distance);
    source.setLogLength(distance.view().size());
    RecordedChannel counter = source.read(LapChannels::counter);
    if (!canCutBy(LapChannels::counter, counter, report) || !canCutBy(LapChannels::distance, distance, report))
        return {};
    const qint64 maxLaps = source.maxLaps();
    std::vector<Ld::LapPiece> pieces =
        Ld::lapPieces(distance.view().size(), counter.view(), static_cast<std::size_t>(maxLaps) + 1);
    if (std::ssize(pieces) > maxLaps) {
        report->obstacle = Obstacle::TooManyLaps;
        return {};
    }
    source.takeLaps(std::ssize(pieces));

    Ld::LapBuilder builder(std::move(pieces));
    builder.addChannel(LapChannels::distance, *distance.header, distance.view());
    distance = {};
    builder.addChannel(LapChannels::counter, *counter.header, counter.view());
    counter = {};
    {
        const RecordedChannel currentTime = source.read(LapChannels::currentTime);
        const RecordedChannel lastTime = source.read(LapChannels::lastTime);
        builder.setLapTimes(currentTime.view(), lastTime.view());
        if (currentTime.header)
            builder.addChannel(LapChannels::currentTime, *currentTime.header, currentTime.view());
        if (lastTime.header)
            builder.addChannel(LapChannels::lastTime, *lastTime.header, lastTime.view());
    }
    const QList<QString> &names = source.channelNames();
    for (qsizetype i = 0; i < names.size(); ++i) {
        const RecordedChannel channel = source.read(i);
        if (channel.header)
            builder.addChannel(names[i], *channel.header, channel.view());
    }
    return builder.takeLaps();
}

} // namespace

QList<QSharedPointer<Lap>> loadLaps(const QString &path)
{
    LdLoadReport report;
    return loadLaps(path, &report);
}

QList<QSharedPointer<Lap>> loadLaps(const QString &path, LdLoadReport *report)
{
    *report = {};
    QFile file(path);
    // Samples are read in large blocks, which a buffer would only copy once more.
    if (!KOV::SDK::openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        report->obstacle = Obstacle::CannotOpen;
        return {};
    }
    QDataStream stream(&file);
    LdData data = readLd(stream);
    ChannelSource source(stream, data, file.size(), report);
    if (!source.hasReadableChannels()) {
        const bool hasChannels = data.headBlock->firstHeaderOffset != 0U;
        report->obstacle = hasChannels ? Obstacle::NoReadableChannels : Obstacle::NoChannels;
        return {};
    }
    QList<QSharedPointer<Lap>> laps = cutChannels(source, report);

    const LdHeadBlock &head = *data.headBlock;
    const QString venue = ldText(head, &LdHeadBlock::venueText);
    const QString driver = ldText(head, &LdHeadBlock::driverText);
    const QString vehicle = ldText(head, &LdHeadBlock::vehicleText);
    const KOV::SDK::Session session = getSessionFromString(ldText(head, &LdHeadBlock::sessionText));
    for (const QSharedPointer<Lap> &lap : std::as_const(laps)) {
        LapHeader &header = lap->header();
        header.session = session;
        header.venueName = venue;
        header.carInfo.driverName = driver;
        header.carInfo.carName = vehicle;
    }
    return laps;
}
