#include "importlog.h"

#include "csv/orvareader.h"
#include "ld/loadlaps.h"

qint64 importLog(const QString &path, Stopwatch *watch)
{
    const QList<QSharedPointer<KOV::SDK::Lap>> laps =
        path.endsWith(QLatin1String(".ld")) ? loadLaps(path) : ORVAReader(nullptr).importLaps(path);
    watch->stop();
    qint64 values = 0;
    for (const auto &lap : laps)
        values += lap->size() * lap->getAvailableRecordedChannels().size();
    return values;
}
