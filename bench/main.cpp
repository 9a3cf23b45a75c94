// orva-bench: compares the readers with loops and with each other (pairs.h), and prints a table. Takes all options of
// Google Benchmark, such as --benchmark_filter=REGEX. With --tidy-log or --logs it times nothing and prints the paths
// of logs for other programs to read.

#include "pairs.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string_view>

namespace {

// Prints the counters only. The framework's own time of a run includes the baseline and so means nothing.
class TableReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override
    {
        std::printf("%-28s %8s %10s  %-10s %10s %8s %10s\n", "", "MB/s", "ns/field", "beside", "ns/field", "ratio",
                    "ns/skipped");
        return true;
    }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            const auto counter = [&](const char *name) { return run.counters.at(name).value; };
            std::printf("%-28s %8.0f %10.2f  %-10s %10.2f %8.2f", run.run_name.function_name.c_str(), counter("MBps"),
                        counter("ns"), run.report_label.c_str(), counter("ref_ns"), counter("ratio"));
            if (run.counters.contains("skip_ns"))
                std::printf(" %10.2f", counter("skip_ns"));
            std::printf("\n");
            std::fflush(stdout);
        }
    }
};

} // namespace

int main(int argc, char *argv[])
{
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (option == "--tidy-log" || option == "--logs") {
        std::puts(qUtf8Printable(tidyLog()));
        if (option == "--logs") {
            for (const QString &path : {singleLapLog(), wideLog(), binaryLog()})
                std::puts(qUtf8Printable(path));
        }
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    registerCsvBenchmarks();
    registerLdBenchmarks();
    registerTextBenchmarks();
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
