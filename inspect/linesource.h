#pragma once

// The lines of a text file as bytes with their places. What a line means: textlog.h.

#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtCore/QStringDecoder>
#include <QtCore/QStringEncoder>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Inspect {

/// Walks a file line by line. LF and CR LF end a line; the last line needs no ending.
///
/// A file that begins with a mark of UTF-16 or UTF-32 is turned into UTF-8; any other file is given as it is, without
/// its UTF-8 mark. A read error counts as the end, and so does a line above 64 MiB. Memory: a block of 256 KiB, or up
/// to three times the longest line.
class LineSource
{
public:
    /// Opens the regular file at @p path. Where that fails there are no lines, and errorString() says why.
    explicit LineSource(const QString &path);

    bool isOpen() const { return file.isOpen(); }
    QString errorString() const { return error; }
    qint64 fileBytes() const { return file.isOpen() ? file.size() : 0; }
    /// Whether the file is in UTF-16 or UTF-32, so that its bytes are not those of its lines.
    bool isWide() const { return wideDecoder.has_value(); }
    bool hasMark() const { return markBytes > 0; }

    /// Goes to the next line; false when there is none, and then line() is empty.
    bool next();
    /// Whether another line follows, and its text in @p following: a view until next() is called.
    bool peek(std::string_view *following);

    /// The line without its ending; a view until next() or peek() is called.
    std::string_view line() const { return current; }
    /// Of line(), counted from 1.
    qint64 lineNumber() const { return number; }
    /// Where line() begins in the file; -1 in a wide one.
    qint64 offset() const { return isWide() ? -1 : currentOffset; }

private:
    bool findLine(std::size_t *length);
    bool readBlock();

    QFile file;
    QString error;
    std::optional<QStringDecoder> wideDecoder;
    QStringEncoder encoder{QStringEncoder::Utf8};
    QByteArray wideBlock;
    std::vector<char> buffer; // the bytes from `begin` to `end` are still to be given out
    std::size_t begin = 0;
    std::size_t end = 0;
    qint64 beginOffset = 0; // of `begin` in the file
    qint64 markBytes = 0;
    bool isAtEnd = false;
    std::string_view current;
    qint64 number = 0;
    qint64 currentOffset = 0;
};

} // namespace Inspect
