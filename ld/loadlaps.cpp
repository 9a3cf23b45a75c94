#include "ld/loadlaps.h"

#include "ld/lapbuilder.h"
#include "ld/ldallowance.h"
#include "ld/ldfile.h"
#include "ld/ldx.h"
#include "ld/resample.h"
#include "sdk/regularfile.h"

#include <QtCore/QFile>
#include <QtCore/QSet>

#include <algorithm>
#include <utility>
#include <vector>

using KOV::SDK::Lap;
using KOV::SDK::LapHeader;

namespace {

// What a lap takes besides its samples, in samples of 8 bytes: at most 800 bytes for itself, 200 for each channel.
constexpr qint64 samplesPerLap = 100;
constexpr qint64 samplesPerLapChannel = 25;
// Laps hold more than was decoded: short channels are filled up, and a "lap" channel at one sample per second makes
// laps of one sample on its way from one number to the next.
constexpr qint64 heldForTenDecoded = 13;

// The channels of one log at the common rate, read one at a time and each name once, as far as the allowance goes.
class ChannelSource
{
public:
    struct Channel
    {
        const LdChannelHeader *header = nullptr;
        std::vector<float> samples;
    };

    ChannelSource(QDataStream &dataStream, LdData &data, qint64 fileBytes)
        : stream(dataStream)
        , headers(readLdChannelHeaders(stream, data))
        , toDecode{ldSampleAllowance(fileBytes)}
        , toHold{ldSampleAllowance(fileBytes) / 10 * heldForTenDecoded}
    {
        for (const LdChannelHeader &header : headers)
            names.append(ldText(header, &LdChannelHeader::name).toLower());
    }

    const QList<QString> &channelNames() const { return names; }

    // The channel of record index, without samples if it has none, if its name had some already, or if it claims more
    // than is left.
    Channel read(qsizetype index)
    {
        const LdChannelHeader &header = headers[static_cast<std::size_t>(index)];
        const qint64 count = ldSampleCount(header);
        const qint64 length = resampledLength(count, header.sampleRate, ldCommonRate);
        const qint64 charge = std::max(length, logLength) + lapCount * samplesPerLapChannel;
        // For a while there are the decoded and the resampled floats too, each half a sample.
        const qint64 passing = (count + (header.sampleRate == ldCommonRate ? 0 : length)) / 2;
        if (length == 0 || taken.contains(names.at(index)) || passing > toHold.left - charge || !toDecode.take(count))
            return {};
        toHold.take(charge);
        taken.insert(names.at(index));
        std::vector<float> samples = readLdChannel(stream, header);
        if (header.sampleRate != ldCommonRate)
            samples = resample(samples, header.sampleRate, ldCommonRate);
        return {&header, std::move(samples)};
    }

    Channel read(QLatin1String name)
    {
        Channel channel;
        for (qsizetype i = 0; i < names.size() && channel.samples.empty(); ++i) {
            if (names.at(i) == name)
                channel = read(i);
        }
        return channel;
    }

    // Every channel read from here on is charged as one that is filled up to this length.
    void setLogLength(qint64 samples) { logLength = samples; }

    // Likewise as one that this many laps hold, and so are the laps and the channels read before. Tells whether that
    // fits.
    bool setLapCount(qint64 laps)
    {
        lapCount = laps;
        return toHold.take(lapCount * (samplesPerLap + taken.size() * samplesPerLapChannel));
    }

private:
    QDataStream &stream;
    std::vector<LdChannelHeader> headers;
    QList<QString> names; // in lower case, of the record with the same index
    QSet<QString> taken;
    LdAllowance toDecode;
    LdAllowance toHold;
    qint64 logLength = 0;
    qint64 lapCount = 0;
};

QList<QSharedPointer<Lap>> cutChannels(ChannelSource &source)
{
    using Channel = ChannelSource::Channel;
    Channel distance = source.read(LapChannels::distance);
    const qint64 logLength = std::ssize(distance.samples);
    source.setLogLength(logLength);
    Channel counter = source.read(LapChannels::counter);
    if (!LapBuilder::canCut(logLength, std::ssize(counter.samples)) ||
        !source.setLapCount(LapBuilder::countLaps(logLength, counter.samples)))
        return {};

    LapBuilder builder(logLength, counter.samples);
    builder.addChannel(LapChannels::distance, *distance.header, distance.samples);
    distance = {};
    builder.addChannel(LapChannels::counter, *counter.header, counter.samples);
    counter = {};
    {
        const Channel currentTime = source.read(LapChannels::currentTime);
        const Channel lastTime = source.read(LapChannels::lastTime);
        builder.setLapTimes(currentTime.samples, lastTime.samples);
        if (currentTime.header)
            builder.addChannel(LapChannels::currentTime, *currentTime.header, currentTime.samples);
        if (lastTime.header)
            builder.addChannel(LapChannels::lastTime, *lastTime.header, lastTime.samples);
    }
    const QList<QString> &names = source.channelNames();
    for (qsizetype i = 0; i < names.size(); ++i) {
        const Channel channel = source.read(i);
        if (channel.header)
            builder.addChannel(names[i], *channel.header, channel.samples);
    }
    return builder.finish();
}

} // namespace

QList<QSharedPointer<Lap>> loadLaps(const QString &path)
{
    QFile file(path);
    // Samples are read in large blocks: a buffer between would only be copied through.
    if (!KOV::SDK::openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QDataStream stream(&file);
    LdData data = readLd(stream);
    ChannelSource source(stream, data, file.size());
    QList<QSharedPointer<Lap>> laps = cutChannels(source);

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
