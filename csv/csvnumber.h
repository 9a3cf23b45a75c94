#pragma once

// Numbers of a text export. The same results as Qt's own conversion, bit for bit, most of the time without calling it.

#include <QtCore/QtEndian>

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Csv {

/// What QString::toDouble gives for @p text, which is ASCII: 0.0 for what is no number. Thread-safe; allocates for
/// texts of more than 64 characters only.
double toDouble(std::string_view text);

inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Texts are converted in words of eight bytes, the first byte of the text in the lowest one.
inline quint64 loadWord(const char *text)
{
    quint64 word = 0;
    std::memcpy(&word, text, sizeof word);
    return qFromLittleEndian(word);
}

/// Marks the bytes of @p word that equal @p c by their highest bit. The lowest mark is right; what stands above it need
/// not be.
inline quint64 bytesEqual(quint64 word, char c)
{
    constexpr quint64 everyByte = 0x0101010101010101;
    const quint64 difference = word ^ (static_cast<quint64>(static_cast<unsigned char>(c)) * everyByte);
    return (difference - everyByte) & ~difference & (0x80 * everyByte);
}

/// Whether the lowest @p length bytes of @p word, 1 to 8, are `-?digits[S digits]` with S = @p decimalSign and at least
/// one digit; stores the value then, and leaves @p value alone for any other text.
///
/// Eight digits and a power of ten up to 10^7 are exact in a double, so one division rounds once, like any correct
/// conversion. The result is no std::optional: that would travel through memory, at twice the cost of the conversion.
Q_ALWAYS_INLINE bool wordDecimal(quint64 word, unsigned length, char decimalSign, double *value)
{
    // The sign comes with the divisor, which costs nothing.
    static constexpr std::array powersOfTen{1.0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            -1.0, -1e1, -1e2, -1e3, -1e4, -1e5, -1e6, -1e7};
    constexpr quint64 everyByte = 0x0101010101010101;
    constexpr quint64 zeroDigits = '0' * everyByte;
    constexpr unsigned wordBits = 64;

    const quint64 isNegative = (word & 0xFF) == '-' ? 1 : 0;
    word >>= 8 * isNegative;
    const unsigned unused = wordBits - 8 * (length - static_cast<unsigned>(isNegative));
    if (unused == wordBits)
        return false;
    // The text moves to the top of the word, with digits of zero below it.
    word = word << unused | (zeroDigits & ~(~quint64(0) << unused));

    // Closes the gap of the decimal sign.
    std::size_t fractionDigits = 0;
    if (const quint64 hits = bytesEqual(word, decimalSign)) {
        const unsigned position = static_cast<unsigned>(std::countr_zero(hits)) & ~7U;
        if (unused == wordBits - 8)
            return false;
        const quint64 below = (quint64(1) << position) - 1;
        fractionDigits = 7 - position / 8;
        word = (word & ~(below << 8 | 0xFF)) | ((word & below) << 8) | '0';
    }

    constexpr quint64 highHalves = 0xF0 * everyByte;
    if (((word & highHalves) | (((word + 0x06 * everyByte) & highHalves) >> 4)) != 0x33 * everyByte)
        return false; // not digits alone

    // Eight digits at once: pairs, then fours, then all.
    word -= zeroDigits;
    word = word * 10 + (word >> 8);
    constexpr quint64 pairs = 0x000000FF000000FF;
    word = ((word & pairs) * 0x000F424000000064 + ((word >> 16) & pairs) * 0x0000271000000001) >> 32;
    *value = static_cast<double>(static_cast<qint32>(word)) / powersOfTen[fractionDigits + 8 * isNegative];
    return true;
}

} // namespace Csv
