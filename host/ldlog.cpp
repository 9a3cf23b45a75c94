#include "host/ldlog.h"

#include "host/failure.h"
#include "ld/lapcutter.h"
#include "ld/ldx.h"
#include "ld/loadlaps.h"

#include <QtCore/QFileInfo>

#include <utility>

namespace Host {

namespace {

QString implausibleFor(const QString &path)
{
    return QStringLiteral("implausible for a file of %1 bytes").arg(QFileInfo(path).size());
}

QString whyNoLaps(const QString &path, const LdLoadReport &report)
{
    using Obstacle = LdLoadReport::Obstacle;
    switch (report.obstacle) {
    case Obstacle::CannotOpen:
        return QStringLiteral("it can no longer be opened");
    case Obstacle::NoChannels:
        return QStringLiteral("it has no channels");
    case Obstacle::NoReadableChannels:
        return QStringLiteral("it has no channels of a readable kind (16 or 32 bit integers with a sample rate)");
    case Obstacle::MissingChannel:
        if (report.leftOut.contains(report.drivingChannel))
            return QStringLiteral("the declared sample count of its \"%1\" channel is %2")
                .arg(report.drivingChannel, implausibleFor(path));
        return QStringLiteral("it has no \"%1\" channel").arg(report.drivingChannel);
    case Obstacle::ShortChannel:
        return QStringLiteral("its \"%1\" channel has too few samples (at least %2 needed at %3 per second)")
            .arg(report.drivingChannel)
            .arg(ldMinSamples)
            .arg(ldCommonRate);
    case Obstacle::TooManyLaps:
        return QStringLiteral("its \"lap\" channel gives a number of laps that is ") + implausibleFor(path);
    case Obstacle::None:
        break;
    }
    return QStringLiteral("none is left of it");
}

// A remark on the channels that every lap lacks because of what they declare.
QString skippedRemark(const QString &path, const QStringList &names)
{
    constexpr qsizetype maxNames = 5;
    QString list = u'"' + names.mid(0, maxNames).join(QLatin1String("\", \"")) + u'"';
    if (names.size() > maxNames)
        list += QStringLiteral(" and %1 more").arg(names.size() - maxNames);
    return QStringLiteral("%1: skipped channels whose declared sample count is %2: %3")
        .arg(path, implausibleFor(path), list);
}

} // namespace

Log loadLdLog(const QString &path)
{
    LdLoadReport report;
    Log log{path, loadLaps(path, &report), {}, {}};
    if (log.laps.isEmpty())
        throw Failure(path + QLatin1String(": a binary .ld log without laps: ") + whyNoLaps(path, report));
    const auto setup = loadValues(sidecarPath(path));
    for (const auto &lap : std::as_const(log.laps)) {
        for (auto entry = setup.cbegin(); entry != setup.cend(); ++entry)
            lap->header().dynamicData.setValue(entry.key(), entry.value());
    }
    if (!report.leftOut.isEmpty())
        log.remarks.append(skippedRemark(path, report.leftOut));
    return log;
}

} // namespace Host
