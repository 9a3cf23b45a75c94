#include "host/textformat.h"

#include "host/laps.h"

#include <algorithm>
#include <array>

namespace Host {

namespace {

constexpr int roundedDigits = 6;

struct CodeRange
{
    char32_t first;
    char32_t last;
};

// The blocks of Unicode's East Asian Width property that are wide as a whole; rare exceptions cost an odd column only.
constexpr std::array wideRanges{CodeRange{0x1100, 0x115F},   CodeRange{0x2E80, 0x303E},  CodeRange{0x3041, 0xA4CF},
                                CodeRange{0xAC00, 0xD7A3},   CodeRange{0xF900, 0xFAFF},  CodeRange{0xFE30, 0xFE6F},
                                CodeRange{0xFF00, 0xFF60},   CodeRange{0xFFE0, 0xFFE6},  CodeRange{0x1F300, 0x1F64F},
                                CodeRange{0x1F900, 0x1F9FF}, CodeRange{0x20000, 0x3FFFD}};

qsizetype cellsOf(char32_t code)
{
    switch (QChar::category(code)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return 0;
    default:
        const bool wide = std::any_of(wideRanges.begin(), wideRanges.end(),
                                      [code](CodeRange range) { return code >= range.first && code <= range.last; });
        return wide ? 2 : 1;
    }
}

// Characters that set the direction of the text after them: a name could make what follows it look like another.
bool isDirectionMark(char16_t code)
{
    return code == 0x061C || (code >= 0x200E && code <= 0x200F) || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

} // namespace

QString roundedNumber(double value)
{
    return QString::number(value, 'g', roundedDigits);
}

QString lapTimeText(QTime time)
{
    if (!hasLapTime(time))
        return orDash(QString());
    constexpr int millisecondsPerSecond = 1000;
    constexpr int secondsPerMinute = 60;
    const int milliseconds = time.msecsSinceStartOfDay();
    const int seconds = milliseconds / millisecondsPerSecond;
    return QStringLiteral("%1:%2.%3")
        .arg(seconds / secondsPerMinute)
        .arg(seconds % secondsPerMinute, 2, 10, QLatin1Char('0'))
        .arg(milliseconds % millisecondsPerSecond, 3, 10, QLatin1Char('0'));
}

QString orDash(const QString &text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

QString printable(QString text)
{
    for (QChar &character : text) {
        const QChar::Category category = character.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph || isDirectionMark(character.unicode()))
            character = QChar::ReplacementCharacter;
    }
    return text;
}

qsizetype displayWidth(const QString &text)
{
    qsizetype width = 0;
    for (const char32_t code : text.toUcs4())
        width += cellsOf(code);
    return width;
}

} // namespace Host
