#include "inspect/linesource.h"

#include "sdk/regularfile.h"

#include <QtCore/QByteArrayView>

#include <algorithm>
#include <cstring>

namespace Inspect {

namespace {

constexpr std::size_t blockBytes = std::size_t{256} * 1024;
constexpr std::size_t maxLineBytes = std::size_t{64} * 1024 * 1024;
constexpr std::size_t maxMarkBytes = 4;

std::string_view withoutEnding(std::string_view line)
{
    if (line.ends_with('\n'))
        line.remove_suffix(1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

} // namespace

LineSource::LineSource(const QString &path)
    : file(path)
    , buffer(blockBytes)
{
    if (!KOV::SDK::openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        const bool isTried = file.error() != QFileDevice::NoError;
        error = isTried ? file.errorString() : QStringLiteral("not a regular file");
        return;
    }
    while (end < maxMarkBytes && readBlock()) {
    }
    const QByteArrayView start(buffer.data(), static_cast<qsizetype>(end));
    const auto encoding = QStringConverter::encodingForData(start);
    if (encoding && *encoding == QStringConverter::Utf8) {
        begin = 3;
        markBytes = 3;
        beginOffset = 3;
    } else if (encoding) {
        markBytes = 1;
        wideDecoder.emplace(*encoding);
        wideBlock.resize(static_cast<qsizetype>(blockBytes));
        const QByteArray narrow = encoder.encode(wideDecoder->decode(start));
        buffer.resize(std::max(buffer.size(), static_cast<std::size_t>(narrow.size())));
        std::copy(narrow.begin(), narrow.end(), buffer.begin());
        end = static_cast<std::size_t>(narrow.size());
    }
}

// Adds what the file has to the buffer, after its last byte; false at the end of the file.
bool LineSource::readBlock()
{
    if (begin > 0) {
        std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(begin),
                  buffer.begin() + static_cast<std::ptrdiff_t>(end), buffer.begin());
        end -= begin;
        begin = 0;
    }
    if (wideDecoder) {
        const auto count = static_cast<qsizetype>(file.read(wideBlock.data(), wideBlock.size()));
        isAtEnd = count <= 0;
        if (isAtEnd)
            return false;
        const QByteArray narrow = encoder.encode(wideDecoder->decode(QByteArrayView(wideBlock).first(count)));
        const auto size = static_cast<std::size_t>(narrow.size());
        if (buffer.size() - end < size)
            buffer.resize(std::max(2 * buffer.size(), end + size));
        std::copy(narrow.begin(), narrow.end(), buffer.begin() + static_cast<std::ptrdiff_t>(end));
        end += size;
        return true;
    }
    if (end == buffer.size())
        buffer.resize(2 * buffer.size());
    const qint64 count = file.read(buffer.data() + end, static_cast<qint64>(buffer.size() - end));
    isAtEnd = count <= 0;
    if (!isAtEnd)
        end += static_cast<std::size_t>(count);
    return !isAtEnd;
}

// The length of the line at `begin` with its ending; false where there is no more line.
bool LineSource::findLine(std::size_t *length)
{
    std::size_t searched = 0;
    for (;;) {
        const std::size_t held = end - begin;
        if (held > searched) {
            const char *from = buffer.data() + begin;
            const auto *newline = static_cast<const char *>(std::memchr(from + searched, '\n', held - searched));
            if (newline) {
                *length = static_cast<std::size_t>(newline - from) + 1;
                return true;
            }
        }
        searched = held;
        if (searched > maxLineBytes)
            return false;
        if (!file.isOpen() || isAtEnd || !readBlock()) {
            *length = end - begin;
            return *length > 0;
        }
    }
}

bool LineSource::next()
{
    std::size_t length = 0;
    const bool isFound = findLine(&length);
    currentOffset = beginOffset;
    current = isFound ? withoutEnding({buffer.data() + begin, length}) : std::string_view();
    begin += length;
    beginOffset += static_cast<qint64>(length);
    number += isFound ? 1 : 0;
    return isFound;
}

bool LineSource::peek(std::string_view *following)
{
    std::size_t length = 0;
    const bool isFound = findLine(&length);
    *following = isFound ? withoutEnding({buffer.data() + begin, length}) : std::string_view();
    return isFound;
}

} // namespace Inspect
