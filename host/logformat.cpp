#include "host/logformat.h"

#include <QtCore/QtEndian>

#include <algorithm>

namespace Host {

namespace {

// The UTF-32 mark of little-endian order starts with the UTF-16 one; that of big-endian order starts with NULs.
bool startsWithByteOrderMark(QByteArrayView head)
{
    return head.startsWith(QByteArrayView("\xEF\xBB\xBF")) || head.startsWith(QByteArrayView("\xFF\xFE")) ||
           head.startsWith(QByteArrayView("\xFE\xFF")) || head.startsWith(QByteArrayView("\0\0\xFE\xFF", 4));
}

// Text may carry a stray control character, or the NULs of a torn write; in binary data they are everywhere.
bool looksLikeText(QByteArrayView head)
{
    constexpr qsizetype charactersPerControl = 50;
    const auto controls = std::count_if(head.begin(), head.end(), [](char character) {
        const bool isControl = static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
        return isControl && (character < '\t' || character > '\r');
    });
    return controls * charactersPerControl < head.size();
}

bool looksLikeBinaryLog(QByteArrayView head, qint64 fileSize)
{
    constexpr quint64 marker = 64;
    constexpr qsizetype firstRecordAt = 8;
    constexpr qsizetype firstRecordEnd = firstRecordAt + static_cast<qsizetype>(sizeof(quint32));
    if (head.size() < firstRecordEnd)
        return false;
    const auto firstRecord = qFromLittleEndian<quint32>(head.data() + firstRecordAt);
    return qFromLittleEndian<quint64>(head.data()) == marker || (firstRecord != 0 && firstRecord < fileSize);
}

} // namespace

LogFormat logFormatOf(QByteArrayView head, qint64 fileSize)
{
    if (startsWithByteOrderMark(head) || looksLikeText(head))
        return LogFormat::Text;
    return looksLikeBinaryLog(head, fileSize) ? LogFormat::Binary : LogFormat::Unknown;
}

} // namespace Host
