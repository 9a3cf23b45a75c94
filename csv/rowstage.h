#pragma once

// The fast path of a data row into its lap: rows are collected, then stored channel by channel.

#include "csv/columnplan.h"
#include "sdk/lap.h"

#include <span>
#include <vector>

namespace Csv {

/// Collects rows of one lap and appends them to its channels in batches.
///
/// Storing a value into each of many channels at every row costs more than reading the row; in batches it costs a third
/// of that. The result is Lap::addSample's for a row that has values only for channels of the lap. The lap distance is
/// the one channel that does not hold what its column holds: each row is committed with it.
class RowStage
{
public:
    /// For rows of the columns of @p plan, which outlives the stage.
    explicit RowStage(const ColumnPlan *plan);

    /// Where the numbers of the next row go, one per column.
    std::span<double> row() { return {nextRow(), plan->columnCount()}; }
    /// The lap distance that the first @p fieldCount fields of row() hold, in percent; 0.0 without such a field.
    double lapDistanceField(std::size_t fieldCount);

    /// Makes @p lap the one that rows are stored in: it has the channels of the first @p fieldCount columns, the lap
    /// distance and no others. Each gets room for @p expectedRows. The stage must hold no rows.
    void bind(KOV::SDK::Lap *lap, std::size_t fieldCount, long long expectedRows);
    /// The maximum number of fields of a row that is committed; 0 before the first lap.
    std::size_t width() const { return boundWidth; }

    /// Takes the row that was put into row(), with its @p lapDistance as a fraction. It has 1 to width() fields;
    /// channels that it lacks get invalidValue.
    void commit(std::size_t fieldCount, double lapDistance);
    /// Stores all collected rows.
    void flush();

private:
    struct Target
    {
        KOV::SDK::Channel *channel;
        std::size_t column;
    };

    double *nextRow() { return values.data() + rowCount * stride; }

    const ColumnPlan *plan;
    std::vector<std::size_t> distanceColumns; // ascending; of those that a row has, the last one counts
    std::size_t stride;                       // numbers from one row to the next: the columns and the lap distance
    std::size_t capacity;                     // in rows
    std::size_t rowCount = 0;
    std::size_t boundWidth = 0;
    std::vector<double> values;
    std::vector<double> block; // one channel's share of the collected rows
    std::vector<Target> targets;
};

} // namespace Csv
