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

private Q_SLOTS:
    void sameLaps()
    {
        const QString folder = QStringLiteral(ORVA_SAMPLES);
        const Laps text = ORVAReader(nullptr).importLaps(folder + u"/club-race.csv"_s);
        const Laps binary = loadLaps(folder + u"/club-race.ld"_s);
        QVERIFY(text.size() == 5 && areSound(text));
        QVERIFY(binary.size() == 5 && areSound(binary));
        const QStringList names = text[0]->getAvailableRecordedChannels();
        QCOMPARE(names.size(), 13);
        for (int i = 0; i < 5; ++i) {
            const LapHeader &header = text[i]->header();
            const LapHeader &other = binary[i]->header();
            const bool isLast = i == 4; // the very last sample of a binary log belongs to no lap
            QCOMPARE(binary[i]->size(), text[i]->size() - (isLast ? 1 : 0));
            QCOMPARE(other.lapNumber, header.lapNumber);
            QCOMPARE(header.lapTime == QTime(0, 59, 59), isLast);
            QCOMPARE(other.lapTime, isLast ? QTime() : header.lapTime);
            QVERIFY(!header.venueName.isEmpty() && other.venueName == header.venueName);
            QVERIFY(!header.carInfo.carName.isEmpty() && other.carInfo.carName == header.carInfo.carName);
            QVERIFY(!header.carInfo.driverName.isEmpty() && other.carInfo.driverName == header.carInfo.driverName);
            QCOMPARE(other.session, header.session);
            QVERIFY(!header.dynamicData.isEmpty() && other.dynamicData.isEmpty()); // only the text reads its sidecar
            for (const QString &name : names) {
                const auto channel = text[i]->channel(name);
                const auto twin = binary[i]->channel(name == u"lapnumber" ? u"lap"_s : name);
                QVERIFY2(twin && twin->unit() == channel->unit(), qPrintable(name));
                if (isLast && name == u"lapcurrentlaptime")
                    continue; // the text road does not repair the last lap's clock
                for (long long row = 0; row < twin->size(); ++row) {
                    // In text exact to its last digit, in binary single precision.
                    const double value = channel->value(row);
                    const double tolerance = 1e-7 + std::abs(value) * std::numeric_limits<float>::epsilon();
                    QVERIFY2(std::abs(twin->value(row) - value) <= tolerance, qPrintable(name));
                }
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestTwoRoads)
#include "tst_tworoads.moc"
