#include "csv/linereader.h"

#include <QtCore/QByteArrayView>

#include <algorithm>
#include <cstring>

namespace Csv {

namespace {

constexpr std::size_t blockSize = std::size_t{256} * 1024;
constexpr std::size_t maxLine = std::size_t{256} * 1024 * 1024;
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

char16_t code(char c)
{
    return static_cast<unsigned char>(c);
}

char16_t code(QChar c)
{
    return c.unicode();
}

// The length of a line without its ending: one LF, and one CR before it or before the end of the file.
template <typename View>
auto lengthWithoutEnding(const View &line)
{
    auto length = line.size();
    if (length > 0 && code(line[length - 1]) == u'\n')
        --length;
    if (length > 0 && code(line[length - 1]) == u'\r')
        --length;
    return length;
}

// Uses a decoder of its own: QString::fromUtf8 would drop a byte order mark at the start of any line, and would keep a
// sequence that the end of the file cuts off. The line's ending must still be there: it distinguishes a broken sequence
// from a cut one.
QString decoded(std::string_view line)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(QByteArrayView(line.data(), static_cast<qsizetype>(line.size())));
}

} // namespace

LineReader::LineReader(QIODevice *device)
    : device(device)
    , buffer(slack + blockSize + slack)
{
    while (end - begin < utf8Mark.size() + 1 && readBlock()) { // as many bytes as the longest mark has
    }
    const std::string_view start(buffer.data() + begin, end - begin);
    const auto encoding = QStringConverter::encodingForData(start);
    if (encoding && *encoding != QStringConverter::Utf8)
        wideDecoder.emplace(*encoding);
    else if (start.starts_with(utf8Mark))
        begin += utf8Mark.size();
}

bool LineReader::next()
{
    return wideDecoder ? nextOfWideText() : nextOfBytes();
}

// Appends the next bytes of the device to the buffer; false at the end of the file.
bool LineReader::readBlock()
{
    if (begin > slack) {
        std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(begin),
                  buffer.begin() + static_cast<std::ptrdiff_t>(end), buffer.begin() + slack);
        end -= begin - slack;
        begin = slack;
    }
    if (end == room())
        buffer.resize(2 * buffer.size());
    const qint64 count = device->read(buffer.data() + end, static_cast<qint64>(room() - end));
    isAtEnd = count <= 0;
    if (!isAtEnd)
        end += static_cast<std::size_t>(count);
    buffer[end] = '\n'; // ends a last line that has no ending
    return !isAtEnd;
}

bool LineReader::nextOfBytes()
{
    std::size_t searched = 0;
    const char *newline = nullptr;
    for (;;) {
        const char *from = buffer.data() + begin + searched;
        newline = static_cast<const char *>(std::memchr(from, '\n', end - begin - searched));
        if (newline)
            break;
        searched = end - begin;
        if (searched > maxLine)
            return false;
        if (isAtEnd || !readBlock())
            break;
    }
    const std::size_t length = newline ? static_cast<std::size_t>(newline - buffer.data()) + 1 - begin : end - begin;
    rawLine = {buffer.data() + begin, length};
    line = rawLine.substr(0, lengthWithoutEnding(rawLine));
    begin += length;
    // A cut-off sequence of up to three bytes is not a line.
    return newline || length > 3 || !decoded(rawLine).isEmpty();
}

bool LineReader::nextOfWideText()
{
    qsizetype newline = -1;
    qsizetype searched = 0;
    for (;;) {
        newline = wideBuffer.indexOf(u'\n', wideBegin + searched);
        if (newline >= 0)
            break;
        searched = wideBuffer.size() - wideBegin;
        if (static_cast<std::size_t>(searched) > maxLine)
            return false;
        if (begin == end && (isAtEnd || !readBlock()))
            break;
        wideBuffer.remove(0, wideBegin);
        wideBegin = 0;
        wideBuffer += wideDecoder->decode(QByteArrayView(buffer.data() + begin, static_cast<qsizetype>(end - begin)));
        begin = end;
    }
    const qsizetype length = (newline >= 0 ? newline + 1 : wideBuffer.size()) - wideBegin;
    wideLine = QStringView(wideBuffer).sliced(wideBegin, length);
    wideLine = wideLine.first(lengthWithoutEnding(wideLine));
    wideBegin += length;

    const bool isAscii = std::all_of(wideLine.begin(), wideLine.end(), [](QChar c) { return c.unicode() < 0x80; });
    line.reset();
    if (isAscii) {
        const auto size = static_cast<std::size_t>(wideLine.size());
        narrowLine.assign(slack + size + slack, '\n');
        std::transform(wideLine.begin(), wideLine.end(), narrowLine.begin() + slack,
                       [](QChar c) { return c.toLatin1(); });
        line = std::string_view(narrowLine).substr(slack, size);
    }
    return length > 0;
}

QString LineReader::text() const
{
    if (wideDecoder)
        return wideLine.toString();
    QString text = decoded(rawLine);
    text.truncate(lengthWithoutEnding(text));
    return text;
}

} // namespace Csv
