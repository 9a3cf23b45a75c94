#pragma once

// Numbers of a text export: the results of Qt's own conversion, bit for bit, mostly without calling it.

#include <QtCore/QtEndian>

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Csv {

/// Whether @p text is `-?digits[.digits][e[+-]digits]`, or for the sign ',' `-?digits[,digits]`, with few enough digits
/// to be exact in one step; stores the value then, and leaves @p value alone for any other text. With a point, there
/// are digits on at least one side of it; with a comma, before it. Thread-safe.
bool exactDecimal(std::string_view text, char decimalSign, double *value);

/// What QString::toDouble gives for @p text, which is ASCII: 0.0 for what is not a number. Thread-safe; allocates only
/// for texts of more than 64 characters.
double toDouble(std::string_view text);

/// Texts are converted in words of eight bytes. The first byte of the text is the lowest one of the word.
constexpr quint64 everyByte = 0x0101010101010101;
constexpr quint64 highBits = 0x80 * everyByte;

inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

inline quint64 loadWord(const char *text)
{
    quint64 word = 0;
    std::memcpy(&word, text, sizeof word);
    return qFromLittleEndian(word);
}

/// Marks the bytes of @p word that equal @p c by their highest bit. Only the lowest mark is reliable.
inline quint64 bytesEqual(quint64 word, char c)
{
    const quint64 difference = word ^ (static_cast<quint64>(static_cast<unsigned char>(c)) * everyByte);
    return (difference - everyByte) & ~difference & highBits;
}

/// Marks the bytes of @p word that are at most @p c, which is ASCII, and those above 0x80 + @p c. Again only the lowest
/// mark is reliable.
inline quint64 bytesUpTo(quint64 word, char c)
{
    return (static_cast<quint64>(0x80 + c) * everyByte - word) & highBits;
}

/// Marks the bytes of @p word that are above 9. Again only the lowest mark is reliable.
inline quint64 bytesAboveNine(quint64 word)
{
    return ((word + 0x76 * everyByte) | word) & highBits;
}

/// The place of the lowest mark, 0 for the lowest byte; 8 where there is none.
inline unsigned lowestMark(quint64 marks)
{
    return marks == 0 ? sizeof marks : static_cast<unsigned>(std::countr_zero(marks)) / 8;
}

/// What to do with a word that has its decimal sign at a given place.
struct DecimalPlace
{
    quint64 above; // the bytes after the sign
    quint64 below; // and those before it
    std::array<double, 2>
        divisors; // the power of ten, positive and negative: that gives the number its sign at no cost
};

constexpr std::array<DecimalPlace, 9> decimalPlaces = [] {
    std::array<DecimalPlace, 9> places{};
    double power = 1.0;
    places[8] = {~quint64(0), 0, {1.0, -1.0}}; // no sign at all
    places[7] = places[8];                     // a sign in the last byte stays there, and is found not to be a digit
    for (unsigned place = 7; place-- > 0;) {
        power *= 10.0;
        places[place] = {~quint64(0) << 8 * (place + 1), (quint64(1) << 8 * place) - 1, {power, -power}};
    }
    return places;
}();

/// Whether the @p length characters before @p end, 1 to 8, are digits, with or without @p decimalSign before or between
/// them; stores the value then, negated if @p isNegative, and leaves @p value alone for any other text. Reads the eight
/// bytes before @p end, whatever the length.
///
/// Eight digits and a power of ten up to 10^7 are exact in a double, so one division rounds once, like any correct
/// conversion. The result is not a std::optional: that would be passed through memory, at twice the cost of the
/// conversion.
Q_ALWAYS_INLINE bool shortDecimalBefore(const char *end, std::size_t length, bool isNegative, char decimalSign,
                                        double *value)
{
    constexpr quint64 all = ~quint64(0);
    static constexpr std::array<quint64, 9> highBytes{0,         all << 56, all << 48, all << 40, all << 32,
                                                      all << 24, all << 16, all << 8,  all};
    const char *const begin = end - sizeof(quint64);

    // Digits become their values; the bytes before the text become zeros.
    quint64 digits = (loadWord(begin) ^ ('0' * everyByte)) & highBytes[length];
    const quint64 noDigits = bytesAboveNine(digits);
    const unsigned place = lowestMark(noDigits);
    const DecimalPlace &sign = decimalPlaces[place];
    if (noDigits != 0) {
        // Closes the gap of the decimal sign.
        digits = (digits & sign.above) | ((digits & sign.below) << 8);
        if (begin[place] != decimalSign || bytesAboveNine(digits) != 0)
            return false;
    }

    // Eight digits at once: pairs, then fours, then all.
    digits = (digits * (10 * 0x100 + 1)) >> 8;
    digits = ((digits & 0x00FF00FF00FF00FF) * (100 * 0x10000 + 1)) >> 16;
    digits = ((digits & 0x0000FFFF0000FFFF) * (10000 * 0x100000000 + 1)) >> 32;
    *value = static_cast<double>(static_cast<qint32>(digits)) / sign.divisors[isNegative ? 1 : 0];
    return true;
}

} // namespace Csv
