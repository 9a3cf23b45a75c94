#pragma once

// The straight road of a data row into its lap: complete rows are collected and then stored channel by channel.

#include "csv/columnplan.h"
#include "sdk/lap.h"

#include <QtCore/QString>

#include <span>
#include <vector>

/// Collects complete rows of one lap and appends them to its channels some at a time.
///
/// Storing a value into each of many channels at every row costs more than reading the row; storing some rows at once
/// costs a third of that. The outcome is Lap::addSample's for a row that has a value for every channel of the lap and
/// for no other.
class RowStage
{
public:
    /// For rows of the columns of @p plan, which outlives the stage. The channel @p derivedName gets a value that each
    /// row is committed with, in place of the one that a column of that name holds.
    RowStage(const ColumnPlan *plan, const QString &derivedName);

    /// Where the numbers of the next row go, one a column.
    std::span<double> row() { return {nextRow(), plan->columnCount()}; }
    /// The number that the row holds for the derived channel; 0.0 without a column of that name.
    double derivedSource() { return nextRow()[derivedColumn]; }

    /// Makes @p lap, which has channels of these names only, the one that rows are stored in, if it has them all. Each
    /// then gets room for @p expectedRows.
    void bind(KOV::SDK::Lap *lap, long long expectedRows);
    /// Lets go of the lap; there must be no rows in hand.
    void unbind() { targets.clear(); }
    bool isBound() const { return !targets.empty(); }

    /// Takes the row that was put into row(), with @p derivedValue; the stage is bound.
    void commit(double derivedValue);
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
    std::size_t derivedColumn; // one behind the last column if no column has that name
    std::size_t stride;        // numbers from one row to the next: the columns, and room for the derived value
    std::size_t capacity;      // in rows
    std::size_t rowCount = 0;
    std::vector<double> values;
    std::vector<double> block; // one channel's share of the rows in hand
    std::vector<Target> targets;
};
