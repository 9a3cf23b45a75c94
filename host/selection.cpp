#include "host/selection.h"

#include "csv/csvtext.h"
#include "host/failure.h"
#include "host/logreader.h"

#include <algorithm>
#include <numeric>

namespace Host {

namespace {

QString hint(const KOV::SDK::Lap &lap, const QString &name)
{
    for (const NamedChannel &named : channelsOf(lap)) {
        // Imports change the case of names, and take blanks and minus signs out of some.
        if (Csv::valueName(named.name) == Csv::valueName(name))
            return QStringLiteral("did you mean \"%1\"?").arg(named.name);
    }
    return QStringLiteral("\"orva-host channels\" lists its channels");
}

} // namespace

std::vector<qsizetype> selectLaps(const Log &log, std::optional<qsizetype> lap)
{
    if (lap)
        return {selectLap(log, lap)};
    std::vector<qsizetype> all(static_cast<std::size_t>(log.laps.size()));
    std::iota(all.begin(), all.end(), 0);
    return all;
}

qsizetype selectLap(const Log &log, std::optional<qsizetype> lap)
{
    if (!lap)
        return usualLap(log.laps);
    if (*lap >= log.laps.size())
        throw Failure(QStringLiteral("%1: no lap with index %2, expected 0%3")
                          .arg(log.path)
                          .arg(*lap)
                          .arg(log.laps.size() > 1 ? QStringLiteral(" to %1").arg(log.laps.size() - 1) : QString()));
    return *lap;
}

void checkNames(const Log &log, const std::vector<qsizetype> &laps, const QStringList &names)
{
    for (const QString &name : names) {
        const bool isThere =
            std::any_of(laps.begin(), laps.end(), [&](qsizetype lap) { return findChannel(*log.laps[lap], name); });
        if (!isThere)
            throw Failure(
                QStringLiteral("%1: no channel \"%2\" in %3, %4")
                    .arg(log.path, name,
                         laps.size() == 1 ? QStringLiteral("lap %1").arg(laps.front()) : QStringLiteral("any lap"),
                         hint(*log.laps[laps.front()], name)));
    }
}

} // namespace Host
