// The library in a host that runs for days: imports side by side, and a thousand of them.

#include "ld/loadlaps.h"
#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QPluginLoader>

#include <array>
#include <atomic>
#include <thread>

using namespace KOV::SDK;
using namespace Testing;

class TestThreads : public QObject
{
    Q_OBJECT

    const QString samples = QStringLiteral(SAMPLE_FOLDER);
    QPluginLoader loader{QStringLiteral(ORVA_LIBRARY)};

    PluginInterfaceImport *plugin() { return qobject_cast<PluginInterfaceImport *>(loader.instance()); }
    static qint64 residentPages()
    {
        QFile statm(u"/proc/self/statm"_s);
        return statm.open(QIODevice::ReadOnly) ? statm.readAll().split(' ').value(1).toLongLong() : 0;
    }

private Q_SLOTS:
    // The first test, since some things are set up once per process: the reference path, Qt's conversions.
    void sideBySide()
    {
        const Files files;
        const QString csv =
            files.write(u"log.csv"_s, "\nLap Dist Pct,x\n\n\n" + "9,1e30\n99,x\"2,5\"\n"_ba.repeated(50));
        files.write(u"log.ldx"_s, "<a><b Id='Event' Value='Race'/></a>");
        auto *const shared = plugin();
        QVERIFY(shared);
        std::atomic<int> soundImports = 0;
        const auto import = [&] {
            for (int times = 0; times < 5; ++times) {
                const Laps laps = shared->import(csv, QString(), {});
                if (laps.size() == 50 && laps[49]->header().session == Session::Race &&
                    loadLaps(samples + u"/club-race.ld"_s).size() == 5)
                    ++soundImports;
            }
        };
        std::array<std::thread, 4> threads{std::thread(import), std::thread(import), std::thread(import),
                                           std::thread(import)};
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(soundImports, 4 * 5);
    }

    void thousandImports()
    {
        qint64 settled = 0;
        for (int round = 0; round < 250; ++round) { // of four samples
            for (const QString &name : {u"/club-race.csv"_s, u"/tools-export.csv"_s, u"/test-day-360.csv"_s})
                QVERIFY(!plugin()->import(samples + name, QString(), {}).isEmpty());
            QVERIFY(!loadLaps(samples + u"/club-race.ld"_s).isEmpty());
            if (round == 3)
                settled = residentPages();
        }
        // Pages of one mebibyte, where a leak of one byte in a hundred would be thirty.
        QVERIFY(!isMemoryOurs || residentPages() - settled <= 256);
    }
};

QTEST_GUILESS_MAIN(TestThreads)
#include "tst_threads.moc"
