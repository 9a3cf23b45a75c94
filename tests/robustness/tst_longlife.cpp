// A host that runs for days: a thousand imports in one process, and a library that comes and goes.

#include "ld/loadlaps.h"
#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QPluginLoader>

using namespace Qt::StringLiterals;

namespace {

const auto libraryPath = QStringLiteral(ORVA_LIBRARY);
const auto sampleFolder = QStringLiteral(SAMPLE_FOLDER);

qint64 residentPages()
{
    QFile statm(u"/proc/self/statm"_s);
    return statm.open(QIODevice::ReadOnly) ? statm.readAll().split(' ').value(1).toLongLong() : 0;
}

} // namespace

class TestLongLife : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thousandImports();
    void libraryComesAndGoes();
};

void TestLongLife::thousandImports()
{
    QPluginLoader loader(libraryPath);
    auto *const plugin = qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance());
    QVERIFY(plugin);
    constexpr int rounds = 250; // of four samples
    qint64 settled = 0;
    for (int round = 0; round < rounds; ++round) {
        for (const char *sample : {"club-race.csv", "tools-export.csv", "test-day-360.csv"})
            QVERIFY(!plugin->import(sampleFolder + u'/' + QLatin1String(sample), QString(), {}).isEmpty());
        QVERIFY(!loadLaps(sampleFolder + u"/club-race.ld"_s).isEmpty());
        if (round == 3)
            settled = residentPages();
    }
    constexpr qint64 tolerance = 256; // pages: one mebibyte, where a leak of one byte in a hundred would be thirty
    const qint64 grown = residentPages() - settled;
    QVERIFY2(Testing::isSanitized || grown <= tolerance, QByteArray::number(grown).constData());
}

void TestLongLife::libraryComesAndGoes()
{
    for (int i = 0; i < 100; ++i) {
        QPluginLoader loader(libraryPath);
        auto *const plugin = qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance());
        QVERIFY(plugin);
        QCOMPARE(plugin->import(sampleFolder, QString(), {}).size(), 0);
        loader.unload();
    }
}

QTEST_GUILESS_MAIN(TestLongLife)
#include "tst_longlife.moc"
