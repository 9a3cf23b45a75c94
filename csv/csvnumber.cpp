#include "csv/csvnumber.h"

#include <QtCore/QString>

#include <algorithm>

namespace Csv {

namespace {

// An integer of up to this many digits is exact in a double, and so are these powers of ten: one multiplication or
// division of the two rounds once, like any correct conversion.
constexpr int exactDigits = 15;
constexpr std::array exactPowersOfTen{1.0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

} // namespace

bool exactDecimal(std::string_view text, char decimalSign, double *value)
{
    const char *at = text.data();
    const char *const end = at + text.size();
    const bool isNegative = at != end && *at == '-';
    if (isNegative)
        ++at;

    qint64 integer = 0;
    int digits = 0;
    int exponent = 0;
    const auto readDigits = [&] {
        for (; at != end && isDigit(*at) && digits <= exactDigits; ++at, ++digits)
            integer = integer * 10 + (*at - '0');
    };
    readDigits();
    const bool hasComma = decimalSign == ',';
    if (hasComma && digits == 0)
        return false;
    if (at != end && *at == decimalSign) {
        const char *const fraction = ++at;
        readDigits();
        exponent = static_cast<int>(fraction - at);
    }
    if (digits == 0 || digits > exactDigits)
        return false;

    if (at != end && (*at == 'e' || *at == 'E') && !hasComma) {
        ++at;
        const bool isNegativeExponent = at != end && *at == '-';
        if (at != end && (*at == '-' || *at == '+'))
            ++at;
        if (end - at < 1 || end - at > 3)
            return false;
        int written = 0;
        for (; at != end && isDigit(*at); ++at)
            written = written * 10 + (*at - '0');
        exponent += isNegativeExponent ? -written : written;
    }
    constexpr auto maxPower = static_cast<int>(exactPowersOfTen.size()) - 1;
    if (at != end || exponent < -maxPower || exponent > maxPower)
        return false;

    auto magnitude = static_cast<double>(integer);
    if (exponent < 0)
        magnitude /= exactPowersOfTen[static_cast<std::size_t>(-exponent)];
    else
        magnitude *= exactPowersOfTen[static_cast<std::size_t>(exponent)];
    *value = isNegative ? -magnitude : magnitude;
    return true;
}

double toDouble(std::string_view text)
{
    double value = 0.0;
    if (exactDecimal(text, '.', &value))
        return value;
    constexpr std::size_t roomOnStack = 64;
    if (text.size() > roomOnStack)
        return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())).toDouble();
    std::array<char16_t, roomOnStack> wide{};
    std::copy(text.begin(), text.end(), wide.begin());
    return QStringView(wide.data(), static_cast<qsizetype>(text.size())).toDouble();
}

} // namespace Csv
