#pragma once

// The straight road of a data row into its lap: rows are collected and then stored channel by channel.

#include "csv/columnplan.h"
#include "sdk/lap.h"

#include <QtCore/QString>

#include <span>
#include <vector>

/// Collects rows of one lap and appends them to its channels some at a time.
///
/// Storing a value into each of many channels at every row costs more than reading the row; storing some rows at once
/// costs a third of that. The outcome is Lap::addSample's for a row that has a value for channels of the lap only.
class RowStage
{
public:
    /// For rows of the columns of @p plan, which outlives the stage. The channel @p derivedName gets a value that each
    /// row is committed with, in place of the one that a column of that name holds.
    RowStage(const ColumnPlan *plan, const QString &derivedName);

    /// Where the numbers of the next row go, one a column.
    std::span<double> row() { return {nextRow(), plan->columnCount()}; }
    /// The number that a row of @p fieldCount fields holds for the derived channel; 0.0 without such a field.
    double derivedSource(std::size_t fieldCount);

    /// Makes @p lap the one that rows are stored in: it has the channels of the first @p fieldCount columns, the
    /// derived one and no others. Each gets room for @p expectedRows. There must be no rows in hand.
    void bind(KOV::SDK::Lap *lap, std::size_t fieldCount, long long expectedRows);
    /// How many fields a row may have that is to be committed; 0 before the first lap.
    std::size_t width() const { return boundWidth; }

    /// Takes the row that was put into row() with @p derivedValue. It has 1 to width() fields; channels that it lacks
    /// get invalidValue.
    void commit(std::size_t fieldCount, double derivedValue);
    /// Stores all rows in hand.
    void flush();

private:
    struct Target
    {
        KOV::SDK::Channel *channel;
        std::size_t column;
    };

    double *nextRow() { return values.data() + rowCount * stride; }

    const ColumnPlan *plan;
    QString derivedName;
    std::vector<std::size_t> derivedColumns; // those of the derived channel's name, ascending
    std::size_t stride;                      // numbers from one row to the next: the columns and the derived value
    std::size_t capacity;                    // in rows
    std::size_t rowCount = 0;
    std::size_t boundWidth = 0;
    std::vector<double> values;
    std::vector<double> block; // one channel's share of the rows in hand
    std::vector<Target> targets;
};
