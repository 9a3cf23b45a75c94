#include "pairs.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace {

constexpr double nanosecondsPerSecond = 1e9;

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double nsPerField(const Work &work, const ChildRun &run)
{
    return run.processorSeconds * nanosecondsPerSecond / (static_cast<double>(run.values) * work.fieldsPerValue);
}

int turns()
{
    constexpr int usual = 5;
    const int wanted = qEnvironmentVariableIntValue("ORVA_BENCH_TURNS");
    return wanted > 0 ? wanted : usual;
}

void runPair(benchmark::State &state, const Work &work, const Work &baseline, double skipped)
{
    std::vector<double> ns;
    std::vector<double> referenceNs;
    std::vector<double> ratios;
    std::vector<double> skippedNs;
    double bestSeconds = 0.0;
    for ([[maybe_unused]] auto turn : state) {
        const ChildRun reference = runInChild(baseline.run);
        const ChildRun run = runInChild(work.run);
        state.SetIterationTime(run.processorSeconds);
        ns.push_back(nsPerField(work, run));
        referenceNs.push_back(nsPerField(baseline, reference));
        ratios.push_back(ns.back() / referenceNs.back());
        if (skipped > 0.0)
            skippedNs.push_back((ns.back() - (1.0 - skipped) * referenceNs.back()) / skipped);
        bestSeconds = bestSeconds > 0.0 ? std::min(bestSeconds, run.processorSeconds) : run.processorSeconds;
    }
    constexpr double bytesPerMegabyte = 1e6;
    state.counters["MBps"] = static_cast<double>(work.bytes) / bytesPerMegabyte / bestSeconds;
    state.counters["ns"] = *std::min_element(ns.begin(), ns.end());
    state.counters["ref_ns"] = *std::min_element(referenceNs.begin(), referenceNs.end());
    state.counters["ratio"] = median(ratios);
    if (skipped > 0.0)
        state.counters["skip_ns"] = median(skippedNs);
}

} // namespace

void registerPair(const std::string &name, const std::string &reference, const std::function<Work()> &work,
                  const std::function<Work()> &baseline, double skipped)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State &state) {
                                     state.SetLabel(reference);
                                     runPair(state, work(), baseline(), skipped);
                                 })
        ->Iterations(turns())
        ->UseManualTime();
}
