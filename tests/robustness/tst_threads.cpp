// Imports on several threads at once: each with readers of its own, on files that others read too.

#include "../ld/ldwriter.h"
#include "csv/orvareader.h"
#include "ld/ldx.h"
#include "ld/loadlaps.h"
#include "testing.h"

#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

class TestThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readersSideBySide();
};

void TestThreads::readersSideBySide()
{
    const Testing::Files files;
    // Quotes that go the plain way, words that Qt converts, and laps to repair: all that is set up once a process.
    QByteArray text = "Venue,Ring\n\nLap Dist Pct,Lap Last Lap Time,Lap Current Lap Time,x\n%,s,s,\n\n";
    for (int row = 0; row < 200; ++row)
        text += QByteArray::number(row % 50 * 2) + ",80,\"" + QByteArray::number(row % 50) + ",5\",x\"" +
                QByteArray::number(row) + "\"1e30\n";
    const QString csv = files.write(u"log.csv"_s, text);
    files.write(u"log.ldx"_s, "<a><b Id='Event' Value='Race'/><c Id='d' Value='1.5' Unit='l'/></a>");
    std::vector<qint16> ramp;
    std::vector<qint16> counter;
    for (qint16 i = 0; i < 200; ++i) {
        ramp.push_back(static_cast<qint16>(i % 50 * 2));
        counter.push_back(static_cast<qint16>(i / 50));
    }
    const QString ld = files.write(
        u"log.ld"_s, LdWriter::log({LdWriter::channel("LapDistPct", ramp, "%"), LdWriter::channel("Lap", counter),
                                    LdWriter::channel("Rpm", ramp, "", 20)}));

    constexpr int threadCount = 4;
    std::array<int, threadCount> sound{};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&, i] {
            for (int times = 0; times < 5; ++times) {
                const auto laps = ORVAReader(nullptr).importLaps(csv);
                const bool isSound = laps.size() == 4 && laps[3]->size() == 50 &&
                                     laps[0]->header().session == KOV::SDK::Session::Race &&
                                     laps[0]->header().lapTime == QTime(0, 1, 20) && loadLaps(ld).size() == 4;
                sound[static_cast<std::size_t>(i)] += isSound ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const int count : sound)
        QCOMPARE(count, 5);
}

QTEST_GUILESS_MAIN(TestThreads)
#include "tst_threads.moc"
