#pragma once

// Times a work and the baseline that it is compared with.

#include "childrun.h"

#include <QtCore/QString>

#include <functional>
#include <string>

/// Something to time, and the size of its input.
struct Work
{
    std::function<qint64(Stopwatch *)> run;
    qint64 bytes; ///< of the file or text
    /// Fields per value that the work returns: there may be fewer channels than columns, and fewer rows than lines.
    double fieldsPerValue = 1.0;
};

/// Registers a benchmark that runs both works in turn, each run in a process of its own.
///
/// "ns" is the processor time per field of the best run, "MBps" the speed of the same run, "ref_ns" the best of the
/// baseline. "ratio" is the median, over all turns, of the ratio of the two times per field. With @p skipped above 0,
/// that part of the fields is skipped unread: "skip_ns" is what one of them costs if the others cost as much as those
/// of the baseline, again the median. The environment variable ORVA_BENCH_TURNS sets the number of turns, which is 5
/// otherwise.
void registerPair(const std::string &name, const std::string &reference, const std::function<Work()> &work,
                  const std::function<Work()> &baseline, double skipped = 0.0);

/// The benchmarks of each file.
void registerCsvBenchmarks();
void registerLdBenchmarks();
void registerTextBenchmarks();

/// Paths of the logs whose imports are measured singly: tidy, one lap, 2,000 columns, binary.
QString tidyLog();
QString singleLapLog();
QString wideLog();
QString binaryLog();
