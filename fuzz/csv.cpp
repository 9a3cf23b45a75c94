// A text export with its sidecar, compared with a plain importer and with the same export in UTF-16. A line "===="
// divides the input into the two; without it there is no sidecar.

#include "csv/csvtext.h"
#include "csv/orvareader.h"
#include "ld/ldx.h"
#include "sdk/wholenumber.h"

#include "fuzz.h"
#include "tests/promises.h"

#include <QtCore/QStringConverter>
#include <QtCore/QTextStream>

#include <algorithm>

using namespace KOV::SDK;
using Testing::Laps;

namespace {

// Reads a text export by Qt's text classes, with one Sample per row, and takes no care of speed or of unusual files.
struct PlainImport
{
    /// The laps of the export at @p path with the sidecar at @p sidecar, without identities.
    Laps importLaps(const QString &path, const QString &sidecar)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QTextStream stream(&file);
        readPreamble(stream);
        readRows(stream);
        finishLap();
        const auto values = loadValues(sidecar);
        for (const auto &done : std::as_const(laps)) {
            LapHeader &header = done->header();
            header.venueName = texts.value(QStringLiteral("Venue"));
            header.carInfo.carName = texts.value(QStringLiteral("Vehicle"));
            header.carInfo.driverName = texts.value(QStringLiteral("Driver"));
            header.session = loadSession(sidecar);
            for (auto entry = values.cbegin(); entry != values.cend(); ++entry)
                header.dynamicData.setValue(entry.key(), entry.value());
        }
        setLapTimes();
        return laps;
    }

    static QStringList fieldsOf(QString line) { return line.remove(u'"').split(u','); }

    void readPreamble(QTextStream &stream)
    {
        QString line;
        while (!stream.atEnd() && !(line = stream.readLine()).isEmpty()) {
            const QStringList fields = fieldsOf(line);
            if (fields.size() > 1)
                texts[fields[0]] = fields[1];
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
        const bool isDecimated = texts.value(QStringLiteral("Sample Rate")).contains(QLatin1String("360"));
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
    QMap<QString, QString> texts;
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

// Whether @p text is far from the budget of an import, whatever it holds.
bool isModest(QByteArrayView text, QByteArrayView sidecar)
{
    const qint64 lines = text.count('\n') + 1;
    constexpr qint64 modest = 512LL * 1024;
    return lines * (text.count(',') + sidecar.count('<') + 4) < modest;
}

bool sameValue(const Value &a, const Value &b) // NaN equals NaN
{
    return a.typeId() == b.typeId() && a.toString() == b.toString() && a.unit() == b.unit();
}

void requireSameHeader(const LapHeader &header, const LapHeader &expected)
{
    Fuzz::require(header.lapTime == expected.lapTime && header.lapNumber == expected.lapNumber);
    Fuzz::require(header.venueName == expected.venueName && header.session == expected.session);
    Fuzz::require(Testing::membersOf(header.carInfo) == Testing::membersOf(expected.carInfo));
    const QStringList names = expected.dynamicData.valueNameList();
    Fuzz::require(header.dynamicData.valueNameList() == names);
    for (const QString &name : names)
        Fuzz::require(sameValue(header.dynamicData.value(name), expected.dynamicData.value(name)));
}

void requireSameLaps(const Laps &laps, const Laps &plain)
{
    Fuzz::require(laps.size() == plain.size());
    for (qsizetype i = 0; i < laps.size(); ++i) {
        requireSameHeader(laps[i]->header(), plain[i]->header());
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
    const auto encoding = QStringConverter::encodingForData(text).value_or(QStringConverter::Utf8);
    const bool isUtf8 = encoding == QStringConverter::Utf8;
    if (!isUtf8 && !QString(QStringDecoder(encoding).decode(text)).isValidUtf16())
        return -1; // lone surrogates give texts with lone surrogates

    const QByteArrayView sidecar = end < 0 ? QByteArrayView() : input.sliced(end + divider.size());
    const QString sidecarPath = Fuzz::write(QStringLiteral("log.ldx"), sidecar);
    const QString path = Fuzz::write(QStringLiteral("log.csv"), text);
    const auto laps = ORVAReader(nullptr).importLaps(path);
    Fuzz::require(!laps.isEmpty());
    Fuzz::require(Testing::areSound(laps));
    requireCuts(laps);
    if (!isModest(text, sidecar))
        return 0;
    requireSameLaps(laps, PlainImport().importLaps(path, sidecarPath));
    if (isUtf8 && text.isValidUtf8() && !text.startsWith('\0')) { // NULs after the mark would mean UTF-32
        QStringEncoder encoder(QStringConverter::Utf16, QStringConverter::Flag::WriteBom);
        const QByteArray wide = encoder.encode(QString::fromUtf8(text));
        requireSameLaps(ORVAReader(nullptr).importLaps(Fuzz::write(QStringLiteral("log.csv"), wide)), laps);
    }
    return 0;
}
