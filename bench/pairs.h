#pragma once

// Times a work beside another one that it is measured by.

#include "childrun.h"

#include <QtCore/QString>

#include <functional>
#include <string>

/// A work, and how much it works on.
struct Work
{
    std::function<qint64(Stopwatch *)> run;
    qint64 bytes; ///< of the file or text
    /// Fields for each value that the work answers: channels may be fewer than columns, rows fewer than lines.
    double fieldsPerValue = 1.0;
};

/// Registers a benchmark that runs both works by turns, each run in a process of its own.
///
/// "ns" is processor time for each field in the best run, "MBps" the same run's speed, "ref_ns" the yardstick's best.
/// "ratio" is the median, over all turns, of the two works' times for each field. With @p skipped above 0, that part of
/// the fields is passed over unread: "skip_ns" is what one of them costs when the others cost as much as the
/// yardstick's, again the median.
/// The environment's ORVA_BENCH_TURNS says how many turns there are; 5 otherwise.
void registerPair(const std::string &name, const std::string &reference, const std::function<Work()> &work,
                  const std::function<Work()> &yardstick, double skipped = 0.0);

/// The benchmarks of each file.
void registerCsvBenchmarks();
void registerLdBenchmarks();
void registerTextBenchmarks();

/// Paths of the logs whose imports are weighed: tidy, one lap, 2,000 columns, binary.
QString tidyLog();
QString singleLapLog();
QString wideLog();
QString binaryLog();
