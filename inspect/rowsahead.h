#pragma once

// The rows of a text export, read and split by a thread of their own. How they are read: textlog.h.

#include "inspect/textlog.h"
#include "inspect/waitingqueue.h"

#include <exception>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace Inspect {

/// The number that a cell holds.
struct Decimal
{
    double value; ///< NaN where it holds none
    int places;   ///< digits after the decimal sign
};

struct RowView
{
    std::span<const Cell> cells;
    std::span<const Decimal> numbers; ///< one for each cell, or none at all
    qint64 offset = 0;                ///< of the row in the file; -1 in a wide one
};

/// Gives the rows of a log in their order, while a thread reads on. Memory: three batches of 256 KiB of rows, or of one
/// longer row, with up to thirty times as much for their cells and numbers.
class RowsAhead
{
public:
    enum class Numbers
    {
        No,
        Yes
    };

    /// Opens the log at @p path. Where that fails there are no rows, and errorString() says why.
    explicit RowsAhead(const QString &path, Numbers numbers = Numbers::No);
    ~RowsAhead();
    RowsAhead(const RowsAhead &) = delete;
    RowsAhead &operator=(const RowsAhead &) = delete;

    bool isOpen() const { return isLogOpen; }
    QString errorString() const { return error; }
    qint64 fileBytes() const { return bytes; }

    /// Goes to the next row; false at the end. Throws what the thread has thrown.
    bool next();
    /// The row, with its numbers if they are wanted. It lives until next() has been called twice.
    RowView row() const;

private:
    // Cells are views into the text, which therefore stays where it is as long as there are rows.
    struct Batch
    {
        struct Row
        {
            std::size_t firstCell;
            std::size_t cellCount;
            qint64 offset;
        };
        std::string text;
        std::vector<Cell> cells;
        std::vector<Decimal> numbers;
        std::vector<Row> rows;
    };
    using BatchPointer = std::unique_ptr<Batch>;

    void read();
    void readRows();
    void fill(Batch &batch, bool *hasRow);

    TextLog log; // the thread's, once it runs
    bool withNumbers;
    bool isLogOpen;
    QString error;
    qint64 bytes;
    WaitingQueue<BatchPointer> filled;
    WaitingQueue<BatchPointer> spent;
    BatchPointer current;
    BatchPointer previous;
    std::size_t index = 0;      // of the row in the current batch
    std::exception_ptr failure; // of the thread, once the rows are at their end
    std::thread thread;
};

} // namespace Inspect
