// orva-bench-log LOG...: imports each log in a process of its own; prints time, speed, and memory against its bound.

#include "importlog.h"

#include <QtCore/QFileInfo>

#include <cstdio>

int main(int argc, char *argv[])
{
    std::printf("%8s %8s %8s %9s %10s %10s %10s  %s\n", "seconds", "cpu s", "MB/s", "ns/value", "laps MiB", "peak MiB",
                "bound MiB", "log");
    bool isWithin = true;
    for (int i = 1; i < argc; ++i) {
        constexpr double megabyte = 1e6;
        constexpr double mebibyte = 1024.0 * 1024.0;
        const QString path = QString::fromLocal8Bit(argv[i]);
        const ChildRun run = runInChild([&](Stopwatch *watch) { return importLog(path, watch); });
        const double lapMebibytes = static_cast<double>(run.values) * sizeof(double) / mebibyte;
        const double peak = static_cast<double>(run.peakBytes) / mebibyte;
        const double bound = 1.15 * lapMebibytes + 64.0; // see docs/performance.md
        isWithin = isWithin && peak <= bound;
        std::printf("%8.3f %8.3f %8.0f %9.2f %10.1f %10.1f %10.1f  %s\n", run.wallSeconds, run.processorSeconds,
                    static_cast<double>(QFileInfo(path).size()) / megabyte / run.wallSeconds,
                    run.processorSeconds * 1e9 / static_cast<double>(run.values), lapMebibytes, peak, bound, argv[i]);
        std::fflush(stdout);
    }
    return isWithin ? 0 : 1;
}
