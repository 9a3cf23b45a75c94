#include "childrun.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

double secondsOf(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

qint64 peakResidentBytes()
{
    constexpr qint64 unit = 1024; // of ru_maxrss on Linux
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * unit;
}

} // namespace

Stopwatch::Stopwatch()
    : processorSeconds(-secondsOf(CLOCK_THREAD_CPUTIME_ID))
    , wallSeconds(-secondsOf(CLOCK_MONOTONIC))
{
}

void Stopwatch::stop()
{
    processorSeconds += secondsOf(CLOCK_THREAD_CPUTIME_ID);
    wallSeconds += secondsOf(CLOCK_MONOTONIC);
}

ChildRun runInChild(const std::function<qint64(Stopwatch *)> &work)
{
    int ends[2] = {};
    if (pipe(ends) != 0)
        std::abort();
    const pid_t child = fork();
    if (child < 0)
        std::abort();
    if (child == 0) {
        ChildRun run{};
        run.baseBytes = peakResidentBytes();
        Stopwatch watch;
        run.values = work(&watch);
        run.peakBytes = peakResidentBytes();
        run.processorSeconds = watch.processorSeconds;
        run.wallSeconds = watch.wallSeconds;
        const bool isSent = write(ends[1], &run, sizeof run) == sizeof run;
        _exit(isSent ? 0 : 1);
    }
    close(ends[1]);
    ChildRun run{};
    const bool isReceived = read(ends[0], &run, sizeof run) == sizeof run;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!isReceived || status != 0) {
        std::fprintf(stderr, "a measured run failed\n");
        std::exit(1);
    }
    return run;
}
