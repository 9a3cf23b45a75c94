#pragma once

// The fast ways through a text against the plain ways that are right by definition, for tests and fuzz targets alike.

#include "csv/csvnumber.h"
#include "csv/csvrow.h"
#include "csv/linereader.h"
#include "tests/promises.h"

#include <QtCore/QBuffer>
#include <QtCore/QTextStream>

#include <algorithm>
#include <string>
#include <vector>

namespace Testing {

/// Whether our conversions of an ASCII @p text give Qt's bits; the short one may leave the text alone.
inline bool numbersAgree(const std::string &text)
{
    QString plain = QString::fromLatin1(text);
    if (!sameBits(Csv::toDouble(text), plain.toDouble()))
        return false;
    if (text.empty() || text.size() > 8)
        return true;
    const quint64 word = Csv::loadWord((text + "7777777").data()); // what stands behind a text means nothing
    const auto length = static_cast<unsigned>(text.size());
    double value = 0.0;
    if (Csv::wordDecimal(word, length, '.', &value) && !sameBits(value, plain.toDouble()))
        return false;
    return !Csv::wordDecimal(word, length, ',', &value) ||
           (!plain.contains(u'.') && sameBits(value, plain.replace(u',', u'.').toDouble()));
}

/// Whether the rows of @p file, up to @p columns fields each, are read the same both ways.
inline bool rowsAgree(QByteArray file, std::size_t columns)
{
    QBuffer device(&file);
    device.open(QIODevice::ReadOnly);
    LineReader lines(&device);
    std::vector<double> quick(columns, -1.0);
    std::vector<double> plain(columns, -2.0);
    while (lines.next()) {
        const std::size_t count = Csv::readRow(lines, quick);
        const auto &bytes = lines.bytes();
        if (count != Csv::readRowPlainly(lines.text(), plain) || count > columns ||
            (bytes && isAscii(*bytes) && Csv::isEmptyRow(*bytes) != (count == 0)) ||
            !std::equal(quick.begin(), quick.begin() + static_cast<std::ptrdiff_t>(count), plain.begin(), sameBits))
            return false;
    }
    return true;
}

/// A file that is read in pieces of some length.
class PieceByPiece : public QIODevice
{
public:
    PieceByPiece(QByteArrayView content, qint64 pieceLength)
        : rest(content)
        , pieceLength(pieceLength)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maximum) override
    {
        const qsizetype count = std::min({maximum, pieceLength, qint64{rest.size()}});
        std::copy_n(rest.data(), count, data);
        rest = rest.sliced(count);
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArrayView rest;
    qint64 pieceLength;
};

/// Whether LineReader finds in @p file, which comes in pieces of @p pieceLength, the lines that QTextStream finds.
inline bool linesAgree(const QByteArray &file, qint64 pieceLength)
{
    PieceByPiece device(file, pieceLength);
    LineReader lines(&device);
    QTextStream expected(file);
    for (QString line; expected.readLineInto(&line);) {
        if (!lines.next() || lines.text() != line)
            return false;
        const auto &bytes = lines.bytes();
        if (bytes && isAscii(*bytes) && QString::fromLatin1(*bytes) != line)
            return false;
    }
    return !lines.next();
}

} // namespace Testing
