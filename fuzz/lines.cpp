// The line reader compared with QTextStream. The first byte of the input is the length of the pieces in which the file
// is read.

#include "csv/linereader.h"

#include "fuzz.h"
#include "tests/promises.h"

#include <QtCore/QBuffer>
#include <QtCore/QTextStream>

#include <algorithm>

namespace {

class PieceByPiece : public QBuffer
{
public:
    PieceByPiece(const QByteArray &content, qint64 pieceLength)
        : pieceLength(pieceLength)
    {
        setData(content);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 maximum) override
    {
        return QBuffer::readData(data, std::min(maximum, pieceLength));
    }

private:
    qint64 pieceLength;
};

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr qsizetype blockOfTextStream = 16384; // across blocks it loses invalid characters
    const QByteArrayView input = Fuzz::bytesOf(data, size);
    if (input.isEmpty() || input.size() > blockOfTextStream)
        return -1;
    const QByteArray file = input.sliced(1).toByteArray();
    PieceByPiece device(file, std::max<qint64>(data[0], 1));
    Csv::LineReader lines(&device);
    QTextStream expected(file);
    for (QString line; expected.readLineInto(&line);) {
        Fuzz::require(lines.next() && lines.text() == line);
        Fuzz::require(!lines.bytes() || !Testing::isAscii(*lines.bytes()) ||
                      QString::fromLatin1(*lines.bytes()) == line);
    }
    Fuzz::require(!lines.next());
    return 0;
}
