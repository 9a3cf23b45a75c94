#include "host/logformat.h"

#include "ld/ldfile.h"

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

// The first eight bytes are 64 in the logs of most writers and 0 in those of some; the offset of the first channel
// record (0 where there is none) follows. Eight zeros alone say little: then the head must hold at least something
// else.
bool looksLikeBinaryLog(QByteArrayView head, qint64 fileSize)
{
    constexpr quint64 usualMarker = 64;
    constexpr qsizetype firstRecordAt = offsetof(LdHeadBlock, firstHeaderOffset);
    constexpr qsizetype headBytes = sizeof(LdHeadBlock);
    if (head.size() < firstRecordAt + qsizetype{sizeof(quint32)})
        return false;
    const auto marker = qFromLittleEndian<quint64>(head.data());
    const auto firstRecord = qFromLittleEndian<quint32>(head.data() + firstRecordAt);
    const bool isCutOff = marker == 0 && firstRecord >= headBytes;
    if (marker == usualMarker || isCutOff || (firstRecord != 0 && firstRecord < fileSize))
        return true;
    const bool isZero = std::all_of(head.begin(), head.end(), [](char byte) { return byte == 0; });
    return marker == 0 && firstRecord == 0 && head.size() >= headBytes && !isZero;
}

} // namespace

LogFormat logFormatOf(QByteArrayView head, qint64 fileSize)
{
    if (startsWithByteOrderMark(head) || looksLikeText(head))
        return LogFormat::Text;
    return looksLikeBinaryLog(head, fileSize) ? LogFormat::Binary : LogFormat::Unknown;
}

} // namespace Host
