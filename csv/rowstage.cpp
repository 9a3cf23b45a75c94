#include "csv/rowstage.h"

#include <algorithm>

using KOV::SDK::Lap;

namespace {

// More rows at once store faster, as long as all of them stay in the processor's cache.
constexpr std::size_t mostRows = 64;
constexpr std::size_t valuesInCache = std::size_t{16} * 1024;

} // namespace

RowStage::RowStage(const ColumnPlan *plan, const QString &derivedName)
    : plan(plan)
    , derivedName(derivedName)
    , derivedColumn(plan->columnCount())
    , stride(plan->columnCount() + 1)
    , capacity(std::clamp<std::size_t>(valuesInCache / stride, 1, mostRows))
    , values(capacity * stride)
    , block(capacity)
{
    const qsizetype index = plan->distinctNames().indexOf(derivedName);
    if (index >= 0)
        derivedColumn = plan->lastColumns()[static_cast<std::size_t>(index)];
}

void RowStage::bind(Lap *lap, long long expectedRows)
{
    targets.clear();
    const auto add = [&](const QString &name, std::size_t column) {
        const auto channel = lap->channel(name);
        if (channel) {
            channel->reserve(expectedRows);
            targets.push_back({channel.get(), column});
        }
        return !channel.isNull();
    };
    const QList<QString> &names = plan->distinctNames();
    bool isComplete = derivedColumn < plan->columnCount() || add(derivedName, derivedColumn);
    for (qsizetype i = 0; isComplete && i < names.size(); ++i)
        isComplete = add(names[i], plan->lastColumns()[static_cast<std::size_t>(i)]);
    if (!isComplete)
        targets.clear();
}

void RowStage::commit(double derivedValue)
{
    nextRow()[derivedColumn] = derivedValue;
    if (++rowCount == capacity)
        flush();
}

void RowStage::flush()
{
    for (const Target &target : targets) {
        const double *source = values.data() + target.column;
        for (std::size_t i = 0; i < rowCount; ++i, source += stride)
            block[i] = *source;
        target.channel->append(std::span(block).first(rowCount));
    }
    rowCount = 0;
}
