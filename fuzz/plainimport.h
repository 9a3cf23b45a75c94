#pragma once

// A text export read the plain way: Qt's text classes, a Sample a row, and nothing for speed or for the unusual.

#include "csv/csvtext.h"
#include "csv/orvareader.h"
#include "sdk/wholenumber.h"

#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cmath>

class PlainImport
{
public:
    /// The laps of the export at @p path, without what a sidecar brings and without identities.
    QList<QSharedPointer<KOV::SDK::Lap>> importLaps(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QTextStream stream(&file);
        readPreamble(stream);
        readRows(stream);
        finishLap();
        setLapTimes();
        return laps;
    }

private:
    using Sample = KOV::SDK::Sample;
    using Lap = KOV::SDK::Lap;

    static QStringList fieldsOf(QString line) { return line.remove(u'"').split(u','); }

    void readPreamble(QTextStream &stream)
    {
        QString line;
        while (!stream.atEnd() && !(line = stream.readLine()).isEmpty()) {
            const QStringList fields = fieldsOf(line);
            if (fields[0] == QLatin1String("Sample Rate") && fields.size() > 1)
                isDecimated = fields[1].contains(QLatin1String("360"));
        }
        while (!stream.atEnd() && (line = stream.readLine()).isEmpty()) {
        }
        names = fieldsOf(line);
        if (!stream.atEnd())
            units = fieldsOf(stream.readLine());
        stream.readLine();
    }

    void readRows(QTextStream &stream)
    {
        int rowCount = 0;
        while (!stream.atEnd()) {
            QString line = stream.readLine();
            processCsvString(line);
            if (line.isEmpty() || (isDecimated && rowCount++ % 6 != 0))
                continue;
            sample.dynamicData.clear();
            const QStringList fields = line.split(u',');
            for (qsizetype i = 0; i < std::min(fields.size(), names.size()); ++i)
                sample.dynamicData.setValue(names[i].toLower().remove(u' ').remove(u'-'), fields[i].toDouble(),
                                            units.value(i));
            addRow();
        }
    }

    void addRow()
    {
        const QString name = QStringLiteral("lapdistpct");
        const double distance = sample.dynamicData.value(name).toDouble() * 0.01;
        sample.dynamicData.setValue(name, distance, QString());
        if (lastDistance - distance > 0.75)
            finishLap();
        lastDistance = distance;
        lap.addSample(sample);
    }

    void finishLap()
    {
        laps.append(QSharedPointer<Lap>::create(lap));
        lap.clear();
        lap.header().lapNumber = KOV::SDK::wholeNumber(sample.dynamicData.value(QStringLiteral("lapnumber")));
    }

    void setLapTimes()
    {
        const QTime midnight(0, 0);
        const QTime placeholder(0, 59, 59);
        laps.constLast()->header().lapTime = placeholder;
        for (qsizetype i = 0; i + 1 < laps.size(); ++i) {
            const auto logged = laps[i + 1]->channel(QStringLiteral("laplastlaptime"));
            if (!logged)
                continue;
            QTime &lapTime = laps[i]->header().lapTime;
            for (long long row = logged->size() - 1; row >= 0; --row) {
                if (!logged->isValid(row) || !(logged->value(row) > 0.0))
                    continue;
                lapTime = midnight.addMSecs(static_cast<int>(std::min(logged->value(row) * 1000.0, 2147483647.0)));
                break;
            }
            ORVAReader::fixLapTime(laps[i].get());
            if (lapTime.isNull() || lapTime == midnight)
                lapTime = placeholder;
        }
    }

    QStringList names;
    QStringList units;
    bool isDecimated = false;
    Sample sample;
    Lap lap;
    double lastDistance = 0.0;
    QList<QSharedPointer<Lap>> laps;
};
