#include "host/exactnumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace Host {

namespace {

// Three digits of a fraction, and how many of them are left without the zeros at the end.
struct Digits
{
    std::array<char, 3> text;
    std::uint8_t length;
};

constexpr std::uint64_t perThree = 1000;

constexpr auto threeDigits = [] {
    std::array<Digits, perThree> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i].text = {static_cast<char>('0' + i / 100), static_cast<char>('0' + i / 10 % 10),
                         static_cast<char>('0' + i % 10)};
        table[i].length = i % 10 != 0 ? 3 : i % 100 != 0 ? 2 : i != 0 ? 1 : 0;
    }
    return table;
}();

char *append(char *to, const Digits &digits, std::size_t length)
{
    return std::copy_n(digits.text.begin(), length, to);
}

// The fast path for what logs hold most: numbers that are decimals of at most six places. Null for any other.
//
// A decimal of at most 15 digits that reads as a number is the only one as short, so it is the shortest text without
// more ado. From 0.001 up to 100000 its plain form is never longer than the one with an exponent, which is what
// std::to_chars chooses between.
char *writeShortDecimal(char *first, double value)
{
    constexpr double minPlain = 0.001;
    constexpr double maxPlain = 100000.0;
    constexpr double scale = 1e6;
    const double magnitude = std::abs(value);
    if (!(magnitude >= minPlain && magnitude < maxPlain))
        return nullptr;
    const auto scaled = static_cast<std::uint64_t>(magnitude * scale + 0.5);
    if (static_cast<double>(scaled) / scale != magnitude)
        return nullptr;

    char *next = first;
    if (value < 0.0)
        *next++ = '-';
    const std::uint64_t thousandths = scaled / perThree;
    next = std::to_chars(next, first + maxNumberLength, static_cast<std::uint32_t>(thousandths / perThree)).ptr;
    const Digits &upper = threeDigits[static_cast<std::size_t>(thousandths % perThree)];
    const Digits &lower = threeDigits[static_cast<std::size_t>(scaled % perThree)];
    if (upper.length + lower.length == 0)
        return next;
    *next++ = '.';
    if (lower.length == 0)
        return append(next, upper, upper.length);
    return append(append(next, upper, upper.text.size()), lower, lower.length);
}

} // namespace

char *writeExactNumber(char *first, double value)
{
    if (char *end = writeShortDecimal(first, value))
        return end;
    return std::to_chars(first, first + maxNumberLength, value).ptr;
}

char *writeExactNumber(char *first, float value)
{
    return std::to_chars(first, first + maxNumberLength, value).ptr;
}

} // namespace Host
