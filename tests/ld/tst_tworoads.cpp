#include "testing.h"

#include "csv/orvareader.h"
#include "ld/loadlaps.h"

#include <cmath>
#include <limits>

using namespace KOV::SDK;
using Laps = QList<QSharedPointer<Lap>>;

// One simulated drive was written in both formats; the two roads must tell the same story of it.
class TestTwoRoads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void sameLaps();
    void sameHeaders();
    void sameChannels_data();
    void sameChannels();

private:
    Laps text;
    Laps binary;
};

void TestTwoRoads::initTestCase()
{
    const QString folder = QStringLiteral(ORVA_SAMPLES);
    ORVAReader reader(nullptr);
    text = reader.importLaps(folder + QStringLiteral("/club-race.csv"));
    binary = loadLaps(folder + QStringLiteral("/club-race.ld"));
    QCOMPARE(text.size(), 5);
    QCOMPARE(binary.size(), 5);
}

void TestTwoRoads::sameLaps()
{
    for (int i = 0; i < 5; ++i) {
        const LapHeader &header = text[i]->header();
        const LapHeader &other = binary[i]->header();
        const bool isLast = i == 4; // the very last sample of a binary log belongs to no lap
        QCOMPARE(binary[i]->size(), text[i]->size() - (isLast ? 1 : 0));
        QCOMPARE(other.lapNumber, header.lapNumber);
        QCOMPARE(other.stintLapIndex, header.stintLapIndex);
        QCOMPARE(other.lapKind, header.lapKind);
        QCOMPARE(other.completed, header.completed);
        if (isLast)
            QVERIFY(!other.lapTime.isValid() && header.lapTime == QTime(0, 59, 59));
        else
            QCOMPARE(other.lapTime, header.lapTime);
    }
}

void TestTwoRoads::sameHeaders()
{
    const LapHeader &header = text[1]->header();
    const LapHeader &other = binary[1]->header();
    QVERIFY(!header.venueName.isEmpty() && !header.carInfo.carName.isEmpty() && !header.carInfo.driverName.isEmpty());
    QCOMPARE(other.venueName, header.venueName);
    QCOMPARE(other.carInfo.carName, header.carInfo.carName);
    QCOMPARE(other.carInfo.driverName, header.carInfo.driverName);
    QCOMPARE(other.session, header.session);
    QVERIFY(!header.dynamicData.isEmpty() && other.dynamicData.isEmpty()); // only the text export reads its sidecar
}

void TestTwoRoads::sameChannels_data()
{
    QTest::addColumn<QString>("binaryName");
    const QList<QString> names = text[0]->getAvailableRecordedChannels();
    QCOMPARE(names.size(), 13);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << (name == QStringLiteral("lapnumber") ? QStringLiteral("lap") : name);
}

void TestTwoRoads::sameChannels()
{
    QFETCH(QString, binaryName);
    const QString name = QString::fromUtf8(QTest::currentDataTag());
    // On the text road the last lap's clock is not repaired.
    const int lapCount = name == QStringLiteral("lapcurrentlaptime") ? 4 : 5;
    for (int lap = 0; lap < lapCount; ++lap) {
        const auto channel = text[lap]->channel(name);
        const auto other = binary[lap]->channel(binaryName);
        QVERIFY(channel && other);
        QCOMPARE(other->unit(), channel->unit());
        for (long long i = 0; i < other->size(); ++i) {
            const double value =
                channel->value(i); // in text exact to its last digit, in binary a single-precision number
            const double tolerance = 1e-7 + std::abs(value) * std::numeric_limits<float>::epsilon();
            QVERIFY2(std::abs(other->value(i) - value) <= tolerance, qPrintable(QString::number(i)));
        }
    }
}

QTEST_APPLESS_MAIN(TestTwoRoads)
#include "tst_tworoads.moc"
