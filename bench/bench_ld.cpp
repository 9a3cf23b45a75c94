// Binary logs: a whole load compared with a copy of its samples, and the resampler by itself.

#include "baseline.h"
#include "importlog.h"
#include "input.h"
#include "pairs.h"

#include "ld/resample.h"

#include <QtCore/QFileInfo>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int commonRate = 60;

// Both count the samples of the file; those of the laps have another rate.
Work load()
{
    const QString path = binaryLog();
    Stopwatch unused;
    const qint64 samples = Baseline::copyLd(path, &unused);
    return {[=](Stopwatch *watch) {
                importLog(path, watch);
                return samples;
            },
            QFileInfo(path).size()};
}

Work copy()
{
    const QString path = binaryLog();
    return {[=](Stopwatch *watch) { return Baseline::copyLd(path, watch); }, QFileInfo(path).size()};
}

std::vector<float> signal(qint64 length)
{
    std::vector<float> samples(static_cast<std::size_t>(length));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::sin(static_cast<float>(i) * 0.01F);
    return samples;
}

constexpr qint64 longerSide = 4'000'000; // samples: more than a processor's cache holds

// Both works read and write as many samples as the longer of input and output has.
std::function<Work()> resampling(int rate)
{
    return [rate] {
        const qint64 length = rate > commonRate ? longerSide : longerSide * rate / commonRate;
        return Work{[=](Stopwatch *watch) {
                        const std::vector<float> input = signal(length);
                        *watch = {};
                        benchmark::DoNotOptimize(resample(input, rate, commonRate).data());
                        watch->stop();
                        return longerSide;
                    },
                    longerSide * qint64{sizeof(float)}};
    };
}

Work copying()
{
    return {[](Stopwatch *watch) {
                const std::vector<float> input = signal(longerSide);
                *watch = {};
                benchmark::DoNotOptimize(std::vector<float>(input).data());
                watch->stop();
                return longerSide;
            },
            longerSide * qint64{sizeof(float)}};
}

} // namespace

QString binaryLog()
{
    return cachedLog(
        QStringLiteral("log-120"),
        {QStringLiteral("--format"), QStringLiteral("ld"), QStringLiteral("--columns"), QStringLiteral("120")},
        logMegabytes(), QStringLiteral("ld"));
}

void registerLdBenchmarks()
{
    registerPair("ld/load", "copy", load, copy);
    for (const int rate : {20, 50, 100, 500, 1000})
        registerPair("resample/from-" + std::to_string(rate), "copy", resampling(rate), copying);
}
