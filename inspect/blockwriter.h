#pragma once

// Writes to a file in large blocks. What is written of text exports: exportwriter.h.

#include <QtCore/QByteArrayView>
#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <vector>

namespace Inspect {

/// Collects bytes and hands them to a device, a megabyte at a time.
class BlockWriter
{
public:
    /// Writes to @p target, which is open, unbuffered if it is a file, and outlives the writer. What lies beyond
    /// @p limitBytes is dropped, unless that is 0.
    explicit BlockWriter(QIODevice &target, qint64 limitBytes = 0);

    /// Room for @p count bytes, valid until the next call. They count as written once commit() has told how many.
    [[nodiscard]] char *room(std::size_t count);
    void commit(const char *end);
    void write(QByteArrayView bytes);

    /// Whether the limit is reached or the device takes no more.
    [[nodiscard]] bool isFull() const;
    /// Hands over what is still held. False if any of all that was written could not be, and errorText() says why.
    [[nodiscard]] bool flush();
    [[nodiscard]] QString errorText() const { return writeError; }

private:
    void handOver();

    QIODevice &device;
    qint64 limit;
    qint64 writtenBytes = 0;
    bool isBroken = false;
    QString writeError;
    std::vector<char> buffer;
    std::size_t used = 0;
};

} // namespace Inspect
