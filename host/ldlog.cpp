#include "host/ldlog.h"

#include "host/failure.h"
#include "ld/lapcutter.h"
#include "ld/ldfile.h"
#include "ld/ldx.h"
#include "ld/loadlaps.h"
#include "ld/resample.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Host {

namespace {

// Number of samples of the channel @p name that the cutting would see; 0 where there is no such channel.
qint64 usableSamples(const std::vector<LdChannelHeader> &headers, QLatin1String name)
{
    for (const LdChannelHeader &header : headers) {
        const qint64 samples = resampledLength(ldSampleCount(header), header.sampleRate, ldCommonRate);
        if (samples > 0 && ldText(header.name).toLower() == name)
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
    for (const QLatin1String name : {QLatin1String("lap"), QLatin1String("lapdistpct")}) {
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

} // namespace

Laps loadLdLog(const QString &path)
{
    Laps laps = loadLaps(path);
    if (laps.isEmpty())
        throw Failure(path + QLatin1String(": a binary .ld log without laps, ") + whyNoLaps(path));
    const auto setup = loadValues(sidecarOf(path));
    for (const auto &lap : std::as_const(laps)) {
        for (auto entry = setup.cbegin(); entry != setup.cend(); ++entry)
            lap->header().dynamicData.setValue(entry.key(), entry.value());
    }
    return laps;
}

QString sidecarOf(const QString &path)
{
    const QFileInfo log(path);
    return log.absolutePath() + u'/' + log.baseName() + QLatin1String(".ldx");
}

} // namespace Host
