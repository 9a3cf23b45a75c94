// Text exports: whole imports compared with the baseline loop, and with the import of a tidy export.

#include "baseline.h"
#include "csv/linereader.h"
#include "importlog.h"
#include "input.h"
#include "pairs.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace {

constexpr int usualColumns = 120;

struct Log
{
    QString style = QStringLiteral("plain");
    int columns = usualColumns;
    int rate = 60;
    int megabytes = logMegabytes();
    bool isSingleLap = false;
};

QString pathOf(const Log &log)
{
    const QString columns = QString::number(log.columns);
    const QString rate = QString::number(log.rate);
    const QString path = cachedLog(
        QStringLiteral("%1-%2-%3").arg(log.style, columns, rate),
        {QStringLiteral("--style"), log.style, QStringLiteral("--columns"), columns, QStringLiteral("--rate"), rate},
        log.megabytes);
    return log.isSingleLap ? cachedSingleLap(path) : path;
}

// The second "Time" of the quoted styles is not a channel of its own.
double fieldsPerValue(const Log &log)
{
    constexpr int decimation = 6;
    const int channels = log.style == QLatin1String("plain") ? log.columns : log.columns - 1;
    return static_cast<double>(log.columns) / channels * (log.rate == 360 ? decimation : 1);
}

using Reading = qint64 (*)(const QString &path, Stopwatch *watch);

// The work is made when it is needed, since its log may have to be generated first.
std::function<Work()> work(const Log &log, Reading read, double fieldsPerValue = 1.0)
{
    return [=] {
        const QString path = pathOf(log);
        return Work{[=](Stopwatch *watch) { return read(path, watch); }, QFileInfo(path).size(), fieldsPerValue};
    };
}

std::function<Work()> import(const Log &log)
{
    return work(log, importLog, fieldsPerValue(log));
}

qint64 walkLines(const QString &path, Stopwatch *watch)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return 0;
    Csv::LineReader lines(&file);
    qint64 count = 0;
    while (lines.next())
        ++count;
    watch->stop();
    return count;
}

} // namespace

QString tidyLog()
{
    return pathOf({});
}

QString singleLapLog()
{
    return pathOf({.isSingleLap = true});
}

QString wideLog()
{
    return pathOf({.columns = 2000});
}

void registerCsvBenchmarks()
{
    const Log tidy;
    const Log narrow{.columns = 10};
    const Log wide{.columns = 2000};
    const Log singleLap{.isSingleLap = true};
    const Log small{.megabytes = 10};
    const Log commas{.style = QStringLiteral("tools")};
    const Log points{.style = QStringLiteral("points")};
    constexpr double skipped = 5.0 / 6.0;

    const auto loop = [](const Log &log) { return work(log, Baseline::readCsv); };
    registerPair("csv/tidy", "loop", import(tidy), loop(tidy));
    registerPair("csv/tidy/10-columns", "loop", import(narrow), loop(narrow));
    registerPair("csv/tidy/2000-columns", "loop", import(wide), loop(wide));
    registerPair("csv/tidy/one-lap", "loop", import(singleLap), loop(singleLap));
    registerPair("csv/tidy/10-MB", "plain Qt", import(small), work(small, Baseline::readCsvWithQt));
    registerPair("csv/commas", "csv/tidy", import(commas), import(tidy));
    registerPair("csv/points", "csv/tidy", import(points), import(tidy));
    registerPair("csv/one-lap", "csv/tidy", import(singleLap), import(tidy));
    registerPair("csv/10-columns", "csv/tidy", import(narrow), import(tidy));
    registerPair("csv/2000-columns", "csv/tidy", import(wide), import(tidy));
    registerPair("csv/1-MB", "csv/tidy", import({.megabytes = 1}), import(tidy));
    registerPair("csv/360-per-second", "csv/tidy", import({.rate = 360}), import(tidy), skipped);
    registerPair("csv/360-per-second/commas", "csv/commas", import({.style = QStringLiteral("tools"), .rate = 360}),
                 import(commas), skipped);
    registerPair("csv/lines", "memchr", work(tidy, walkLines, usualColumns),
                 work(tidy, Baseline::walkLines, usualColumns));
}
