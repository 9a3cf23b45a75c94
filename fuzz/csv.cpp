// A text export with its sidecar, held against the plain way. A line "====" in the input divides the two; without it
// there is no sidecar.

#include "csv/csvtext.h"
#include "csv/orvareader.h"
#include "sdk/wholenumber.h"

#include "fuzz.h"
#include "tests/promises.h"

#include <QtCore/QStringConverter>
#include <QtCore/QTextStream>

#include <algorithm>

using namespace KOV::SDK;
using Testing::Laps;

namespace {

// A text export read the plain way: Qt's text classes, a Sample a row, and nothing for speed or for the unusual.
struct PlainImport
{
    /// The laps of the export at @p path, without what a sidecar brings and without identities.
    Laps importLaps(const QString &path)
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
        lap.header().lapNumber = wholeNumber(sample.dynamicData.value(QStringLiteral("lapnumber")));
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
    Laps laps;
};

// As many laps as cuts: the distance falls by more than three quarters between two laps and nowhere else.
void requireCuts(const Laps &laps)
{
    double last = 0.0;
    for (qsizetype i = 0; i < laps.size(); ++i) {
        const auto distance = laps[i]->channel(QStringLiteral("lapdistpct"));
        Fuzz::require(distance || laps[i]->isEmpty());
        for (long long row = 0; distance && row < distance->size(); ++row) {
            const bool isCut = last - distance->value(row) > 0.75;
            Fuzz::require(isCut == (i > 0 && row == 0));
            last = distance->value(row);
        }
    }
}

// Whether the allowances of an import suffice for @p text, whatever it holds.
bool isModest(QByteArrayView text, QByteArrayView sidecar)
{
    const qint64 lines = text.count('\n') + 1;
    constexpr qint64 allowance = 512LL * 1024;
    return lines * (text.count(',') + sidecar.count('<') + 4) < allowance;
}

void requirePlainLaps(const Laps &laps, const Laps &plain)
{
    Fuzz::require(laps.size() == plain.size());
    for (qsizetype i = 0; i < laps.size(); ++i) {
        Fuzz::require(laps[i]->header().lapTime == plain[i]->header().lapTime);
        Fuzz::require(laps[i]->header().lapNumber == plain[i]->header().lapNumber);
        const QStringList names = plain[i]->getAvailableRecordedChannels();
        Fuzz::require(laps[i]->getAvailableRecordedChannels() == names);
        for (const QString &name : names) {
            const auto samples = laps[i]->channel(name)->samples();
            const auto expected = plain[i]->channel(name)->samples();
            const bool isDistance = name == QLatin1String("lapdistpct");
            Fuzz::require(isDistance || laps[i]->channel(name)->unit() == plain[i]->channel(name)->unit());
            Fuzz::require(
                std::equal(samples.begin(), samples.end(), expected.begin(), expected.end(), Testing::sameBits));
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr QByteArrayView divider("\n====\n");
    const QByteArrayView input = Fuzz::bytesOf(data, size);
    const qsizetype end = input.indexOf(divider);
    const QByteArrayView text = end < 0 ? input : input.first(end);
    // A file of lone surrogates gives texts of them.
    const auto encoding = QStringConverter::encodingForData(text);
    if (encoding && *encoding != QStringConverter::Utf8)
        return -1;

    const QByteArrayView sidecar = end < 0 ? QByteArrayView() : input.sliced(end + divider.size());
    Fuzz::write(QStringLiteral("log.ldx"), sidecar);
    ORVAReader reader(nullptr);
    const QString path = Fuzz::write(QStringLiteral("log.csv"), text);
    const auto laps = reader.importLaps(path);
    Fuzz::require(!laps.isEmpty());
    Fuzz::require(Testing::areSound(laps));
    requireCuts(laps);
    if (isModest(text, sidecar))
        requirePlainLaps(laps, PlainImport().importLaps(path));
    return 0;
}
