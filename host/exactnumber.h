#pragma once

// Numbers for programs: the shortest decimal text that reads back as exactly the same number, in any locale.

#include <QtCore/QByteArray>

#include <cstddef>

namespace Host {

/// Room that any number needs: "-2.2250738585072014e-308" has 24 characters.
inline constexpr std::size_t maxNumberLength = 32;

/// Writes @p value to @p first, where there must be room for maxNumberLength characters, and returns the end of the
/// text: "0.1", "-0", "1e+25", "inf", "nan". It is the text of std::to_chars.
char *writeExactNumber(char *first, double value);
char *writeExactNumber(char *first, float value);

template <typename Number>
QByteArray exactNumber(Number value)
{
    QByteArray text(static_cast<qsizetype>(maxNumberLength), Qt::Uninitialized);
    text.truncate(writeExactNumber(text.data(), value) - text.constData());
    return text;
}

} // namespace Host
