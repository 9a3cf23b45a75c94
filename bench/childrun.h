#pragma once

// Runs a work in a process of its own, so that each run begins with fresh memory, as the first import of a host does.

#include <QtCore/qglobal.h>

#include <functional>

/// To be stopped at the end of the work, before its result is counted and destroyed.
class Stopwatch
{
public:
    Stopwatch();
    void stop();
    /// Processor time of the thread, kernel time included: other programs disturb it least.
    double processorSeconds = 0.0;
    double wallSeconds = 0.0;
};

struct ChildRun
{
    double processorSeconds;
    double wallSeconds;
    qint64 values;    ///< what the work returned
    qint64 peakBytes; ///< maximum resident memory of the whole process
    qint64 baseBytes; ///< the same before the work began
};

/// Runs @p work in a forked child; it stops the watch and returns the number of values it has made. Ends the program
/// when the child fails.
ChildRun runInChild(const std::function<qint64(Stopwatch *)> &work);
