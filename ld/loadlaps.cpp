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
namespace LapChannels = KOV::SDK::LapChannels;

namespace {

// What laps take in memory besides their samples, at most.
constexpr qint64 bytesPerLap = 720;
constexpr qint64 bytesPerLapChannel = 190;

struct RecordedChannel
{
    QString name;
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
    ChannelSource(QDataStream &dataStream, LdData &data, qint64 fileBytes)
        : stream(dataStream)
        , headers(readLdChannelHeaders(stream, data))
        , budget(fileBytes)
    {
        for (const LdChannelHeader &header : headers)
            names.append(ldText(header, &LdChannelHeader::name).toLower());
    }

    qsizetype recordCount() const { return names.size(); }
    bool hasReadableChannels() const
    {
        return std::any_of(headers.begin(), headers.end(),
                           [](const auto &header) { return ldSampleCount(header) > 0; });
    }

    // The channel of record index, unless it has no samples, its name was read before, or it is left out.
    RecordedChannel read(qsizetype index)
    {
        const QString &name = names[index];
        const LdChannelHeader &header = headers[static_cast<std::size_t>(index)];
        const qint64 count = ldSampleCount(header);
        const qint64 length =
            header.sampleRate == ldCommonRate ? count : resampledLength(count, header.sampleRate, ldCommonRate);
        if (length == 0 || taken.contains(name))
            return {};
        if (!budget.take(count * qint64{sizeof(float)} + logLength.value_or(length) * qint64{sizeof(double)} +
                         lapCount * bytesPerLapChannel)) {
            refused.insert(name);
            return {};
        }
        taken.insert(name);
        return {name, &header, readLdChannel(stream, header)};
    }

    RecordedChannel read(QLatin1String name)
    {
        RecordedChannel channel;
        for (qsizetype i = names.indexOf(name); i >= 0 && !channel.header; i = names.indexOf(name, i + 1))
            channel = read(i);
        return channel;
    }

    // What the budget refused and no other record of the same name made up for.
    QList<QString> leftOut() const
    {
        QList<QString> left = (refused - taken).values();
        std::sort(left.begin(), left.end());
        return left;
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
    QList<QString> names; // in lower case, of the record with the same index
    QSet<QString> taken;
    QSet<QString> refused;
    Ld::Budget budget;
    std::optional<qint64> logLength;
    qint64 lapCount = 0;
};

QList<QSharedPointer<Lap>> cutChannels(ChannelSource &source, LdLoadReport *report)
{
    RecordedChannel distance = source.read(LapChannels::distance);
    source.setLogLength(distance.view().size());
    RecordedChannel counter = source.read(LapChannels::counter);
    for (const auto &[name, channel] :
         {std::pair(LapChannels::counter, &counter), {LapChannels::distance, &distance}}) {
        if (channel->view().size() >= ldMinSamples)
            continue;
        report->obstacle = channel->header ? Obstacle::ShortChannel : Obstacle::MissingChannel;
        report->drivingChannel = name;
        return {};
    }
    const qint64 maxLaps = source.maxLaps();
    std::vector<Ld::LapPiece> pieces =
        Ld::lapPieces(distance.view().size(), counter.view(), static_cast<std::size_t>(maxLaps) + 1);
    if (std::ssize(pieces) > maxLaps) {
        report->obstacle = Obstacle::TooManyLaps;
        return {};
    }
    source.takeLaps(std::ssize(pieces));

    Ld::LapBuilder builder(std::move(pieces));
    const auto add = [&builder](const RecordedChannel &channel) {
        if (channel.header)
            builder.addChannel(channel.name, *channel.header, channel.view());
    };
    add(std::exchange(distance, {}));
    add(std::exchange(counter, {}));
    {
        const RecordedChannel currentTime = source.read(LapChannels::currentTime);
        const RecordedChannel lastTime = source.read(LapChannels::lastTime);
        builder.setLapTimes(currentTime.view(), lastTime.view());
        add(currentTime);
        add(lastTime);
    }
    for (qsizetype i = 0; i < source.recordCount(); ++i)
        add(source.read(i));
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
    ChannelSource source(stream, data, file.size());
    if (!source.hasReadableChannels()) {
        const bool hasChannels = data.headBlock->firstHeaderOffset != 0U;
        report->obstacle = hasChannels ? Obstacle::NoReadableChannels : Obstacle::NoChannels;
        return {};
    }
    QList<QSharedPointer<Lap>> laps = cutChannels(source, report);
    report->leftOut = source.leftOut();

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
