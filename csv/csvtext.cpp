#include "csv/csvtext.h"

#include <QtCore/QRegularExpression>

void processCsvString(QString &line)
{
    static const QRegularExpression quotedInteger(QStringLiteral("\"(-?[0-9]+)\""));
    // Possessive: otherwise a long run of digits without a closing quote is tried in two parts, split at every place.
    static const QRegularExpression quotedDecimal(QStringLiteral("\"(-?[0-9]++),?([0-9]++)?\""));

    if (!line.contains(u'"'))
        return;
    line.remove(QLatin1String("\"\""), Qt::CaseSensitive);
    line.replace(quotedInteger, QStringLiteral("\\1"));
    line.replace(quotedDecimal, QStringLiteral("\\1.\\2"));
}
