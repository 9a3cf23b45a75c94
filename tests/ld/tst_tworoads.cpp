#include "testing.h"

#include "csv/orvareader.h"
#include "ld/loadlaps.h"

#include <cmath>
#include <limits>

using namespace KOV::SDK;
using namespace Testing;

// One simulated drive was written in both formats; the two roads must tell the same story of it.
class TestTwoRoads : public QObject
{
    Q_OBJECT

    Laps text;
    Laps binary;

private Q_SLOTS:
    void initTestCase()
    {
        const QString folder = QStringLiteral(ORVA_SAMPLES);
        ORVAReader reader(nullptr);
        text = reader.importLaps(folder + u"/club-race.csv"_s);
        binary = loadLaps(folder + u"/club-race.ld"_s);
        QVERIFY(text.size() == 5 && areSound(text));
        QVERIFY(binary.size() == 5 && areSound(binary));
    }

    void sameHeaders()
    {
        for (int i = 0; i < 5; ++i) {
            const LapHeader &header = text[i]->header();
            const LapHeader &other = binary[i]->header();
            const bool isLast = i == 4; // the very last sample of a binary log belongs to no lap
            QCOMPARE(binary[i]->size(), text[i]->size() - (isLast ? 1 : 0));
            QCOMPARE(other.lapNumber, header.lapNumber);
            QCOMPARE(other.lapTime, isLast ? QTime() : header.lapTime);
            QVERIFY(!isLast || header.lapTime == QTime(0, 59, 59));
            QVERIFY(!header.venueName.isEmpty() && other.venueName == header.venueName);
            QVERIFY(!header.carInfo.carName.isEmpty() && other.carInfo.carName == header.carInfo.carName);
            QVERIFY(!header.carInfo.driverName.isEmpty() && other.carInfo.driverName == header.carInfo.driverName);
            QCOMPARE(other.session, header.session);
            QVERIFY(!header.dynamicData.isEmpty() && other.dynamicData.isEmpty()); // only the text reads its sidecar
        }
    }

    void sameChannels_data()
    {
        const Table<QString> row("binaryName");
        const QList<QString> names = text[0]->getAvailableRecordedChannels();
        QCOMPARE(names.size(), 13);
        for (const QString &name : names)
            row(qPrintable(name), name == u"lapnumber" ? u"lap"_s : name);
    }
    void sameChannels()
    {
        QFETCH(QString, binaryName);
        const QString name = QString::fromUtf8(QTest::currentDataTag());
        // On the text road the last lap's clock is not repaired.
        const int lapCount = name == u"lapcurrentlaptime" ? 4 : 5;
        for (int lap = 0; lap < lapCount; ++lap) {
            const auto channel = text[lap]->channel(name);
            const auto other = binary[lap]->channel(binaryName);
            QVERIFY(channel && other);
            QCOMPARE(other->unit(), channel->unit());
            for (long long i = 0; i < other->size(); ++i) {
                const double value = channel->value(i); // in text exact to its last digit, in binary single precision
                const double tolerance = 1e-7 + std::abs(value) * std::numeric_limits<float>::epsilon();
                QVERIFY2(std::abs(other->value(i) - value) <= tolerance, qPrintable(QString::number(i)));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestTwoRoads)
#include "tst_tworoads.moc"
