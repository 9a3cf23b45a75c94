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

    const std::string padded = text + std::string(Csv::wordDecimalLength, '7'); // what is behind a text means nothing
    double value = 0.0;
    if (Csv::wordDecimal(std::string_view(padded).substr(0, size), '.', &value))
        Fuzz::require(Fuzz::sameBits(value, expected));
    const QString withPoint = QString::fromLatin1(text).replace(u',', u'.');
    if (Csv::wordDecimal(std::string_view(padded).substr(0, size), ',', &value))
        Fuzz::require(text.find('.') == std::string::npos && Fuzz::sameBits(value, withPoint.toDouble()));
    return 0;
}
