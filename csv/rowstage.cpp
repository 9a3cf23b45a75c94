#include "csv/rowstage.h"

#include "sdk/lapchannels.h"

#include <algorithm>

using KOV::SDK::Lap;

namespace Csv {

namespace {

// Larger batches are stored faster, as long as they stay in the processor's cache.
constexpr std::size_t maxRows = 64;
constexpr std::size_t valuesInCache = std::size_t{64} * 1024;

void prefetchForWriting([[maybe_unused]] const double *address)
{
#if defined(__GNUC__) // and Clang
    __builtin_prefetch(address, 1);
#endif
}

// Prefetches the memory that the next `count` samples go to. With many channels it has left the cache since the last
// batch.
void prefetchEnd(const KOV::SDK::Channel &channel, std::size_t count)
{
    constexpr std::size_t samplesPerLine = 64 / sizeof(double);
    const double *const end = channel.samples().data() + channel.size();
    const std::size_t room = std::min(count, static_cast<std::size_t>(channel.capacity() - channel.size()));
    for (std::size_t i = 0; i < room; i += samplesPerLine)
        prefetchForWriting(end + i);
}

} // namespace

RowStage::RowStage(const ColumnPlan *plan)
    : plan(plan)
    , stride(plan->columnCount() + 1)
    , capacity(std::clamp<std::size_t>(valuesInCache / stride, 1, maxRows))
    , values(capacity * stride)
    , block(capacity)
{
    for (std::size_t column = 0; column < plan->columnCount(); ++column) {
        if (plan->name(column) == KOV::SDK::LapChannels::distance)
            distanceColumns.push_back(column);
    }
}

double RowStage::lapDistanceField(std::size_t fieldCount)
{
    const auto beyond = std::lower_bound(distanceColumns.begin(), distanceColumns.end(), fieldCount);
    return beyond == distanceColumns.begin() ? 0.0 : nextRow()[*(beyond - 1)];
}

void RowStage::bind(Lap *lap, std::size_t fieldCount, long long expectedRows)
{
    targets.clear();
    const auto add = [&](const QString &name, std::size_t column) {
        const auto channel = lap->channel(name);
        channel->reserve(expectedRows);
        targets.push_back({channel.get(), column});
    };
    // Of columns with the same title the last one counts.
    std::vector<bool> counts(fieldCount, true);
    for (std::size_t column = 0; column < fieldCount; ++column) {
        if (const qint32 before = plan->columnBefore(column); before >= 0)
            counts[static_cast<std::size_t>(before)] = false;
    }
    for (std::size_t column = 0; column < fieldCount; ++column) {
        if (counts[column] && plan->name(column) != KOV::SDK::LapChannels::distance)
            add(plan->name(column), column);
    }
    add(KOV::SDK::LapChannels::distance, plan->columnCount());
    boundWidth = fieldCount;
}

void RowStage::commit(std::size_t fieldCount, double lapDistance)
{
    double *const row = nextRow();
    for (std::size_t column = fieldCount; column < boundWidth; ++column) {
        const qint32 before = plan->columnBefore(column);
        row[column] = before < 0 ? KOV::SDK::invalidValue : row[before];
    }
    row[plan->columnCount()] = lapDistance;
    if (++rowCount == capacity)
        flush();
}

void RowStage::flush()
{
    if (rowCount == 0)
        return;
    constexpr std::size_t ahead = 4; // channels
    for (std::size_t k = 0; k < targets.size(); ++k) {
        if (k + ahead < targets.size())
            prefetchEnd(*targets[k + ahead].channel, rowCount);
        const Target &target = targets[k];
        const double *source = values.data() + target.column;
        for (std::size_t i = 0; i < rowCount; ++i, source += stride)
            block[i] = *source;
        target.channel->append(std::span(block).first(rowCount));
    }
    rowCount = 0;
}

} // namespace Csv
