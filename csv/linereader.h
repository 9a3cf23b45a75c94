#pragma once

// The lines of a text file as views into one buffer. What a row of them means: csvrow.h.

#include <QtCore/QIODevice>
#include <QtCore/QString>
#include <QtCore/QStringDecoder>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Csv {

/// Walks a device line by line, and gives the lines that QTextStream::readLine with default settings gives.
///
/// A byte order mark at the start decides between UTF-8 (also the default), UTF-16 and UTF-32. LF and CR LF end a line,
/// a lone CR does not; the last line needs no ending. Each invalid byte of UTF-8 reads as one U+FFFD, and a sequence
/// that the end of the file cuts off reads as nothing. A read error counts as the end, and so does a line of more than
/// 256 Mi characters: a file with such a line is not a text.
///
/// Memory: a block of 256 KiB, or up to three times the longest line; about seven times where the file is not UTF-8.
class LineReader
{
public:
    /// Bytes before and after a line that may be read, though they mean nothing: rows are read in words and blocks.
    /// Only the first byte after it is known: a line feed or a carriage return.
    static constexpr std::size_t slack = 64;

    /// Reads from @p device, which is open and outlives the reader.
    explicit LineReader(QIODevice *device);

    /// Goes to the next line; false when there is none.
    bool next();

    /// The line without its ending, in ASCII or what should be UTF-8; the view lives until next(). Nothing where the
    /// file has another encoding and the line is not ASCII. A line with bytes above 127 is to be read by text(), which
    /// knows what becomes of invalid ones.
    const std::optional<std::string_view> &bytes() const { return line; }
    /// The line without its ending; decoded on each call.
    QString text() const;

private:
    bool nextOfBytes();
    bool nextOfWideText();
    bool readBlock();
    std::size_t room() const { return buffer.size() - slack; }

    QIODevice *device;
    std::optional<QStringDecoder> wideDecoder; // set when the file is not UTF-8
    std::vector<char> buffer;                  // the bytes from `begin` to `end` have not been handed out
    std::size_t begin = slack;
    std::size_t end = slack;
    bool isAtEnd = false;
    std::string_view rawLine; // with its ending, in `buffer`
    QString wideBuffer;
    qsizetype wideBegin = 0;
    QStringView wideLine;
    std::string narrowLine; // an ASCII line of a wide file, between two slacks
    std::optional<std::string_view> line;
};

} // namespace Csv
