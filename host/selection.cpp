#include "host/selection.h"

#include "csv/csvtext.h"
#include "host/failure.h"
#include "host/logreader.h"
#include "host/options.h"

#include <algorithm>
#include <numeric>

namespace Host {

namespace {

bool isViewOfOneLap(Options::View view)
{
    return view != Options::View::LapTable && view != Options::View::Json;
}

QString hint(const KOV::SDK::Lap &lap, const QString &name)
{
    for (const NamedChannel &named : channelsOf(lap)) {
        // Imports change the case of names, and take blanks and minus signs out of some.
        if (Csv::valueName(named.name) == Csv::valueName(name))
            return QStringLiteral("did you mean \"%1\"?").arg(named.name);
    }
    return QStringLiteral("--channels lists those it has");
}

} // namespace

Selection select(const Log &log, const Options &options)
{
    Selection selection;
    if (options.lap && *options.lap >= log.laps.size())
        throw Failure(QStringLiteral("%1: no lap with index %2, expected 0 to %3")
                          .arg(log.path, QString::number(*options.lap), QString::number(log.laps.size() - 1)));
    if (options.lap) {
        selection.laps = {*options.lap};
    } else if (isViewOfOneLap(options.view)) {
        selection.laps = {usualLap(log.laps)};
    } else {
        selection.laps.resize(static_cast<std::size_t>(log.laps.size()));
        std::iota(selection.laps.begin(), selection.laps.end(), 0);
    }

    for (const QString &name : options.valueNames) {
        const bool isThere = std::any_of(selection.laps.begin(), selection.laps.end(),
                                         [&](qsizetype lap) { return findChannel(*log.laps[lap], name); });
        if (!isThere)
            throw Failure(QStringLiteral("%1: no channel \"%2\" in %3, %4")
                              .arg(log.path, name,
                                   selection.laps.size() == 1 ? QStringLiteral("lap %1").arg(selection.laps.front())
                                                              : QStringLiteral("any lap"),
                                   hint(*log.laps[selection.laps.front()], name)));
    }
    selection.valueNames = options.valueNames;
    return selection;
}

} // namespace Host
