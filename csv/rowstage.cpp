#include "csv/rowstage.h"

#include <algorithm>

using KOV::SDK::Lap;

namespace {

// More rows at once store faster, as long as all of them stay in the processor's cache.
constexpr std::size_t mostRows = 64;
constexpr std::size_t valuesInCache = std::size_t{64} * 1024;

} // namespace

RowStage::RowStage(const ColumnPlan *plan, const QString &derivedName)
    : plan(plan)
    , derivedName(derivedName)
    , stride(plan->columnCount() + 1)
    , capacity(std::clamp<std::size_t>(valuesInCache / stride, 1, mostRows))
    , values(capacity * stride)
    , block(capacity)
{
    for (std::size_t column = 0; column < plan->columnCount(); ++column) {
        if (plan->name(column) == derivedName)
            derivedColumns.push_back(column);
    }
}

double RowStage::derivedSource(std::size_t fieldCount)
{
    const auto behind = std::lower_bound(derivedColumns.begin(), derivedColumns.end(), fieldCount);
    return behind == derivedColumns.begin() ? 0.0 : nextRow()[*(behind - 1)];
}

void RowStage::bind(Lap *lap, std::size_t fieldCount, long long expectedRows)
{
    targets.clear();
    const auto add = [&](const QString &name, std::size_t column) {
        const auto channel = lap->channel(name);
        channel->reserve(expectedRows);
        targets.push_back({channel.get(), column});
    };
    // Where titles repeat, the last column counts.
    std::vector<bool> counts(fieldCount, true);
    for (std::size_t column = 0; column < fieldCount; ++column) {
        if (const qint32 before = plan->columnBefore(column); before >= 0)
            counts[static_cast<std::size_t>(before)] = false;
    }
    for (std::size_t column = 0; column < fieldCount; ++column) {
        if (counts[column] && plan->name(column) != derivedName)
            add(plan->name(column), column);
    }
    add(derivedName, plan->columnCount());
    boundWidth = fieldCount;
}

void RowStage::commit(std::size_t fieldCount, double derivedValue)
{
    double *const row = nextRow();
    for (std::size_t column = fieldCount; column < boundWidth; ++column) {
        const qint32 before = plan->columnBefore(column);
        row[column] = before < 0 ? KOV::SDK::invalidValue : row[before];
    }
    row[plan->columnCount()] = derivedValue;
    if (++rowCount == capacity)
        flush();
}

void RowStage::flush()
{
    if (rowCount == 0)
        return;
    for (const Target &target : targets) {
        const double *source = values.data() + target.column;
        for (std::size_t i = 0; i < rowCount; ++i, source += stride)
            block[i] = *source;
        target.channel->append(std::span(block).first(rowCount));
    }
    rowCount = 0;
}
