#pragma once

// The file that an export is written to, in large blocks and, if wanted, cut off as if the logger had lost power.

#include <QtCore/QFile>
#include <QtCore/QString>

#include <vector>

namespace samples {

class OutputFile
{
public:
    /// Writes to @p path; what lies beyond @p limitBytes is dropped, unless that is 0.
    OutputFile(const QString &path, qint64 limitBytes);

    [[nodiscard]] bool open();
    /// Room for @p count bytes, valid until the next call. They count as written once commit() has told how many.
    [[nodiscard]] char *room(qsizetype count);
    void commit(const char *end);
    void write(const QByteArray &bytes);
    /// Where nothing more is wanted or can be written.
    [[nodiscard]] bool isFull() const;
    /// Writes what is still held. False, with errorText(), if any of the file could not be written.
    [[nodiscard]] bool close();
    [[nodiscard]] QString errorText() const;

private:
    void flush();

    QFile file;
    qint64 limit;
    qint64 writtenBytes = 0;
    bool isBroken = false;
    QString writeError;
    std::vector<char> buffer;
    size_t used = 0;
};

} // namespace samples
