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

/// Longest text that wordDecimal takes, without its sign.
inline constexpr std::size_t wordDecimalLength = 8;

/// Whether @p text is `-?digits[S digits]` with S = @p decimalSign, at least one digit and at most eight characters
/// behind the sign; stores its value then, and leaves @p value alone for any other text.
///
/// Eight digits and a power of ten up to 10^7 are exact in a double, so one division rounds once, like any correct
/// conversion. Reads up to eight bytes behind @p text.
/// The result is no std::optional: that would travel through memory, at twice the cost of the conversion.
Q_ALWAYS_INLINE bool wordDecimal(std::string_view text, char decimalSign, double *value)
{
    static constexpr std::array powersOfTen{1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
    constexpr quint64 everyByte = 0x0101010101010101;
    constexpr quint64 highBits = 0x80 * everyByte;
    constexpr quint64 zeroDigits = '0' * everyByte;

    const bool isNegative = !text.empty() && text.front() == '-';
    const char *const begin = text.data() + (isNegative ? 1 : 0);
    const std::size_t length = text.size() - (isNegative ? 1 : 0);
    if (length - 1 >= wordDecimalLength) // also an empty text
        return false;

    // The text stands at the top of the word, its last character in the highest byte, with digits of zero below it.
    quint64 word = 0;
    std::memcpy(&word, begin, sizeof word);
    word = qFromLittleEndian(word);
    const auto unused = static_cast<unsigned>(8 * (wordDecimalLength - length));
    word <<= unused;
    word |= zeroDigits & ~(~quint64(0) << unused);

    // Closes the gap of the decimal sign. The lowest set bit of `hits` marks the first byte that equals it.
    std::size_t fractionDigits = 0;
    const quint64 difference = word ^ (static_cast<quint64>(static_cast<unsigned char>(decimalSign)) * everyByte);
    if (const quint64 hits = (difference - everyByte) & ~difference & highBits) {
        const unsigned position = static_cast<unsigned>(std::countr_zero(hits)) & ~7U;
        if (length == 1)
            return false;
        const quint64 below = (quint64(1) << position) - 1;
        fractionDigits = wordDecimalLength - 1 - position / 8;
        word = (word & ~(below << 8 | 0xFF)) | ((word & below) << 8) | '0';
    }

    constexpr quint64 highNibbles = 0xF0 * everyByte;
    if (((word & highNibbles) | (((word + 0x06 * everyByte) & highNibbles) >> 4)) != 0x33 * everyByte)
        return false;

    // Eight digits at once: pairs, then fours, then all.
    word -= zeroDigits;
    word = word * 10 + (word >> 8);
    constexpr quint64 pairs = 0x000000FF000000FF;
    word = ((word & pairs) * 0x000F424000000064 + ((word >> 16) & pairs) * 0x0000271000000001) >> 32;
    const double magnitude = static_cast<double>(word & 0xFFFFFFFF) / powersOfTen[fractionDigits];
    *value = std::bit_cast<double>(std::bit_cast<quint64>(magnitude) | static_cast<quint64>(isNegative) << 63);
    return true;
}

} // namespace Csv
