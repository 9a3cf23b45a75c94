#include "timespeedimport.h"

#include <QtCore/QFile>
#include <QtCore/QUuid>

using namespace KOV::SDK;

QString TimeSpeedImport::pluginName() const
{
    return QStringLiteral("Time and speed");
}

QString TimeSpeedImport::sourceName() const
{
    return QStringLiteral("Stopwatch");
}

QString TimeSpeedImport::pluginVersion() const
{
    return QStringLiteral("1.0");
}

QList<QString> TimeSpeedImport::availableImportFormats() const
{
    return {QStringLiteral("Time and speed (*.txt)")};
}

QList<QSharedPointer<Lap>> TimeSpeedImport::import(const QString &path, const QString & /*format*/,
                                                   const QMap<QString, QVariant> & /*options*/)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        message(QStringLiteral("cannot read ") + path, 0);
        return {}; // there are no errors, only no laps
    }

    const auto lap = QSharedPointer<Lap>::create();
    qint64 dropped = 0;
    while (!file.atEnd()) {
        constexpr qint64 longestLine = 256;
        const QList<QByteArray> fields = file.readLine(longestLine).trimmed().split(',');
        bool isTime = false;
        bool isSpeed = false;
        const double time = fields.first().toDouble(&isTime);
        const double speed = fields.last().toDouble(&isSpeed);
        if (fields.size() != 2 || !isTime || !isSpeed) {
            ++dropped;
            continue;
        }
        Sample row;
        row.dynamicData.setValue(QStringLiteral("time"), time, QStringLiteral("s"));
        row.dynamicData.setValue(QStringLiteral("speed"), speed, QStringLiteral("m/s"));
        lap->addSample(row); // makes the channels at the first row, and keeps them at one length
    }
    if (dropped > 0)
        message(QStringLiteral("lines without a time and a speed: %1").arg(dropped), 0);
    if (lap->isEmpty())
        return {};

    LapHeader &header = lap->header();
    header.lapId = QUuid::createUuid();
    header.stintId = QUuid::createUuid();
    header.sessionId = QUuid::createUuid();
    header.stintNumber = 1;
    header.lapKind = 0;
    header.carInfo.sourceName = sourceName();
    header.carInfo.pluginName = pluginName();
    return {lap};
}
