// A file of any kind, written anew and imported: nothing is lost on the way, and the laps are those that were found.

#include "inspect/rewrite.h"
#include "inspect/lapgrid.h"
#include "inspect/rewriteerror.h"
#include "inspect/trackmap.h"
#include "plugin/plugininterfaceimport.h"

#include "fuzz.h"

#include <QtCore/QPluginLoader>

#include <algorithm>
#include <cmath>

using KOV::SDK::Lap;

namespace {

constexpr size_t maxBytes = 4096; // one row of them may become 600

void checkGrid(const Lap &lap)
{
    constexpr int count = 50;
    const Inspect::TimedLap timed{
        &lap,
        lap.header().lapTime.isValid() ? std::optional(lap.header().lapTime.msecsSinceStartOfDay()) : std::nullopt,
        lap.header().completed};
    for (const auto axis : {Inspect::LapAxis::LapDistance, Inspect::LapAxis::Distance, Inspect::LapAxis::Time}) {
        const auto course = Inspect::courseOf(timed, axis, Inspect::axisLength(timed, axis));
        if (!course)
            continue;
        for (const QString &name : lap.getAvailableRecordedChannels())
            Fuzz::require(valuesOnGrid(*course, *lap.channel(name), count, Inspect::Between::Linear).size() == count);
        const auto seconds = secondsOnGrid(*course, count);
        const auto lost = Inspect::differences(seconds, seconds);
        Fuzz::require(std::all_of(lost.begin(), lost.end(), [](double d) { return !(std::abs(d) > 0.0); }));
        if (const auto positions = Inspect::findPositions(lap))
            Fuzz::require(trackOnGrid(*course, *positions, count).size() == count);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > maxBytes)
        return -1;
    Inspect::RewriteOptions options;
    options.sourcePath = Fuzz::write(QStringLiteral("log"), Fuzz::bytesOf(data, size));
    options.targetPath = options.sourcePath + QLatin1String("-new.csv");
    options.mayOverwrite = true;
    for (const bool isBinary : {false, true}) {
        Inspect::RewriteSummary summary;
        try {
            summary = Inspect::rewriteLog(options, isBinary);
        } catch (const Inspect::RewriteError &) {
            continue;
        }
        static QPluginLoader loader(QStringLiteral(ORVA_LIBRARY));
        static auto *const plugin = qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance());
        const auto laps = plugin->import(options.targetPath, {}, {});
        qint64 rows = 0;
        for (const auto &lap : laps) {
            rows += lap->size();
            checkGrid(*lap);
        }
        Fuzz::require(rows == summary.rows);
        // "3 marks of ..." make at most four laps; fewer where they are too close for the import to see them.
        bool isCount = false;
        const int starts = summary.laps.section(u' ', 0, 0).toInt(&isCount);
        Fuzz::require(!isCount || laps.size() <= starts + 1);
    }
    return 0;
}
