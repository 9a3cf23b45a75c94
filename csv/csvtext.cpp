#include "csv/csvtext.h"

#include <QtCore/QRegularExpression>

void processCsvString(QString &line)
{
    static const QRegularExpression quotedInteger(QStringLiteral("\"(-?[0-9]+)\""));
    static const QRegularExpression quotedDecimal(QStringLiteral("\"(-?[0-9]+),?([0-9]+)?\""));

    if (!line.contains(u'"'))
        return;
    line.remove(QLatin1String("\"\""), Qt::CaseSensitive);
    line.replace(quotedInteger, QStringLiteral("\\1"));
    line.replace(quotedDecimal, QStringLiteral("\\1.\\2"));
}
