#include "host/ldlog.h"

#include "host/failure.h"
#include "ld/lapcutter.h"
#include "ld/ldfile.h"
#include "ld/ldx.h"
#include "ld/loadlaps.h"
#include "ld/resample.h"
#include "sdk/lapchannels.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Host {

namespace {

// Number of samples that a lap's channel of @p header could come from; 0 where its record gives none.
qint64 usableSamples(const LdChannelHeader &header)
{
    return resampledLength(ldSampleCount(header), header.sampleRate, ldCommonRate);
}

// Number of samples of the channel @p name that the cutting would see; 0 where there is no such channel.
qint64 usableSamples(const std::vector<LdChannelHeader> &headers, QLatin1String name)
{
    for (const LdChannelHeader &header : headers) {
        const qint64 samples = usableSamples(header);
        if (samples > 0 && ldText(header, &LdChannelHeader::name).toLower() == name)
            return samples;
    }
    return 0;
}

QString whyNoLaps(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QLatin1String("it can no longer be opened (") + file.errorString() + u')';
    QDataStream stream(&file);
    LdData data = readLd(stream);
    if (data.headBlock->firstHeaderOffset == 0U)
        return QStringLiteral("it holds no channels");
    const std::vector<LdChannelHeader> headers = readLdChannelHeaders(stream, data);
    if (std::all_of(headers.begin(), headers.end(), [](const auto &header) { return ldSampleCount(header) == 0; }))
        return QStringLiteral("it holds no channels of a readable kind (16 or 32 bit integers, with a sample rate)");
    for (const QLatin1String name : {KOV::SDK::LapChannels::counter, KOV::SDK::LapChannels::distance}) {
        const qint64 samples = usableSamples(headers, name);
        if (samples == 0)
            return QStringLiteral("it holds no \"%1\" channel").arg(name);
        if (samples < ldFewestSamples)
            return QStringLiteral("its \"%1\" channel holds too few samples (%2 at %3 per second, at least %4 needed)")
                .arg(name)
                .arg(samples)
                .arg(ldCommonRate)
                .arg(ldFewestSamples);
    }
    return QStringLiteral("its channels claim more samples than %1 bytes can hold").arg(file.size());
}

// The channels that the log at @p path has samples of and @p lap, like every lap of it, lacks: those that loadLaps has
// passed over.
QStringList missingChannels(const QString &path, const KOV::SDK::Lap &lap)
{
    QStringList names;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return names;
    QDataStream stream(&file);
    LdData data = readLd(stream);
    for (const LdChannelHeader &header : readLdChannelHeaders(stream, data)) {
        const QString name = ldText(header, &LdChannelHeader::name).toLower();
        if (usableSamples(header) > 0 && !lap.containsRecordedChannel(name))
            names.append(name);
    }
    names.removeDuplicates();
    return names;
}

QString missingRemark(const QString &path, const QStringList &names)
{
    constexpr qsizetype mostNames = 5;
    const qsizetype more = names.size() - mostNames;
    QString list = QStringLiteral("\"%1\"").arg(names.first(std::min(names.size(), mostNames)).join(u"\", \""));
    if (more > 0)
        list += QStringLiteral(" and %1 more").arg(more);
    return QStringLiteral("%1: channels left out, as more samples are claimed than a log of %2 bytes is believed to "
                          "hold: %3")
        .arg(path, QString::number(QFileInfo(path).size()), list);
}

} // namespace

Log loadLdLog(const QString &path)
{
    Log log{path, loadLaps(path), {}, {}};
    if (log.laps.isEmpty())
        throw Failure(path + QLatin1String(": a binary .ld log without laps, ") + whyNoLaps(path));
    const auto setup = loadValues(sidecarPath(path));
    for (const auto &lap : std::as_const(log.laps)) {
        for (auto entry = setup.cbegin(); entry != setup.cend(); ++entry)
            lap->header().dynamicData.setValue(entry.key(), entry.value());
    }
    const QStringList missing = missingChannels(path, *log.laps.first());
    if (!missing.isEmpty())
        log.remarks.append(missingRemark(path, missing));
    return log;
}

} // namespace Host
