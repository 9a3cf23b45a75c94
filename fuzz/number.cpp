// Our conversions of number texts, one per line, compared with Qt's bit by bit; the short one may leave a text alone.

#include "csv/csvnumber.h"

#include "fuzz.h"
#include "tests/promises.h"

#include <sstream>
#include <string>

namespace {

void requireQtsValue(const std::string &text)
{
    const QString plain = QString::fromLatin1(text);
    const double expected = plain.toDouble();
    Fuzz::require(Testing::sameBits(Csv::toDouble(text), expected));
    const bool isNegative = text.starts_with('-');
    const std::size_t length = text.size() - (isNegative ? 1 : 0);
    if (length < 1 || length > 8)
        return;
    const std::string afterDigits = "77777777" + text; // what precedes a text means nothing
    const char *const end = afterDigits.data() + afterDigits.size();
    double value = 0.0;
    if (Csv::shortDecimalBefore(end, length, isNegative, '.', &value))
        Fuzz::require(Testing::sameBits(value, expected));
    if (Csv::shortDecimalBefore(end, length, isNegative, ',', &value))
        Fuzz::require(!plain.contains(u'.') && Testing::sameBits(value, QString(plain).replace(u',', u'.').toDouble()));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::istringstream lines(std::string(data, data + size));
    for (std::string text; std::getline(lines, text);) {
        if (Testing::isAscii(text))
            requireQtsValue(text);
    }
    return 0;
}
