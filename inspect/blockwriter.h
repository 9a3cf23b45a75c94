#pragma once

// Writes to a file in large blocks, in a thread of its own. What is written of text exports: exportwriter.h.

#include "inspect/waitingqueue.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <atomic>
#include <thread>
#include <vector>

namespace Inspect {

/// Collects bytes and hands them to a device, a megabyte at a time. A thread writes to it while the next megabyte is
/// collected; what fits into one is written without a thread.
class BlockWriter
{
public:
    /// Writes to @p target, which is open, unbuffered if it is a file, outlives the writer, and is not used by others
    /// until flush() has returned. What lies beyond @p limitBytes is dropped, unless that is 0.
    explicit BlockWriter(QIODevice &target, qint64 limitBytes = 0);
    ~BlockWriter();
    BlockWriter(const BlockWriter &) = delete;
    BlockWriter &operator=(const BlockWriter &) = delete;

    /// Room for @p count bytes, valid until the next call. They count as written once commit() has told how many.
    [[nodiscard]] char *room(std::size_t count);
    void commit(const char *end);
    void write(QByteArrayView bytes);

    /// Whether the limit is reached or the device is known to take no more.
    [[nodiscard]] bool isFull() const;
    /// Returns when all is written. False if any of all that was written could not be, and errorText() says why.
    [[nodiscard]] bool flush();
    /// After flush().
    [[nodiscard]] QString errorText() const { return writeError; }

private:
    struct Block
    {
        std::vector<char> bytes;
        qint64 count = 0; // of the bytes to write
    };

    qint64 countToWrite();
    void handOver();
    void writeOut(const char *bytes, qint64 count);

    QIODevice &device;
    qint64 limit;
    qint64 writtenBytes = 0; // or handed over
    std::vector<char> buffer;
    std::size_t used = 0;
    std::atomic<bool> isBroken = false;
    QString writeError;
    WaitingQueue<Block> filled;
    WaitingQueue<Block> spent;
    std::thread thread;
};

} // namespace Inspect
