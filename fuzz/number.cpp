// Our conversion of a number text against Qt's, bit by bit; the fast one too where it takes the text.

#include "csv/csvnumber.h"

#include "fuzz.h"

#include <string>

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(data, data + size);
    if (!Fuzz::isAscii(text))
        return -1;
    const double expected = QString::fromLatin1(text).toDouble();
    Fuzz::require(Fuzz::sameBits(Csv::toDouble(text), expected));

    if (size == 0 || size > 8)
        return 0;
    const quint64 word = Csv::loadWord((text + "7777777").data()); // what stands behind a text means nothing
    const auto length = static_cast<unsigned>(size);
    double value = 0.0;
    if (Csv::wordDecimal(word, length, '.', &value))
        Fuzz::require(Fuzz::sameBits(value, expected));
    const QString withPoint = QString::fromLatin1(text).replace(u',', u'.');
    if (Csv::wordDecimal(word, length, ',', &value))
        Fuzz::require(text.find('.') == std::string::npos && Fuzz::sameBits(value, withPoint.toDouble()));
    return 0;
}
