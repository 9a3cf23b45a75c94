#include "inspect/words.h"

#include <QtCore/QLocale>

#include <algorithm>
#include <cmath>

namespace Inspect {

QString quoted(const QString &text)
{
    constexpr qsizetype maxLength = 60;
    return u'"' + (text.size() > maxLength ? text.first(maxLength) + QStringLiteral("...") : text) + u'"';
}

QString listOf(const QStringList &names)
{
    constexpr qsizetype maxNames = 5;
    QStringList shown;
    for (const QString &name : names.first(std::min(names.size(), maxNames)))
        shown.append(quoted(name));
    const qsizetype more = names.size() - shown.size();
    return shown.join(QLatin1String(", ")) + (more > 0 ? QStringLiteral(" and %1 more").arg(more) : QString());
}

QString counted(qint64 count, const QString &singular, const QString &plural)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates); // 12,345 whatever the machine is set to
    return english.toString(count) + u' ' + (count == 1 ? singular : plural);
}

QString counted(qint64 count, const QString &singular)
{
    return counted(count, singular, singular + u's');
}

QString durationText(double seconds)
{
    constexpr double minute = 60.0;
    constexpr double maxSeconds = 1e12; // beyond that it is no duration
    if (!(seconds < maxSeconds))
        return QStringLiteral("an endless time");
    if (seconds < minute)
        return QStringLiteral("%1 s").arg(seconds, 0, 'f', 1);
    const auto whole = static_cast<qint64>(std::llround(seconds));
    return QStringLiteral("%1 min %2 s").arg(whole / 60).arg(whole % 60);
}

} // namespace Inspect
