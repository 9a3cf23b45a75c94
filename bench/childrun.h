#pragma once

// Runs one reading in a process of its own, so that each begins with fresh memory, as the first import of a host does.

#include <QtCore/qglobal.h>

#include <functional>

/// Stops at the end of the work, before its result is counted and thrown away.
class Stopwatch
{
public:
    Stopwatch();
    void stop();
    /// Processor time of the thread, in the kernel too: what other programs do at the time disturbs it least.
    double processorSeconds = 0.0;
    double wallSeconds = 0.0;
};

struct ChildRun
{
    double processorSeconds;
    double wallSeconds;
    qint64 values;    ///< what the work answered
    qint64 peakBytes; ///< most resident memory, of the whole process
    qint64 baseBytes; ///< the same before the work began
};

/// Runs @p work in a forked child; it stops the watch and answers how many values it has made. Ends the program when
/// the child fails.
ChildRun runInChild(const std::function<qint64(Stopwatch *)> &work);
