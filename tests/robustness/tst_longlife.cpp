// A host that runs for days: a thousand imports in one process, and a library that comes and goes.

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
    QFile sample(sampleFolder + u"/club-race.csv"_s);
    QVERIFY(sample.open(QIODevice::ReadOnly));
    const Testing::Files files;
    const QString path = files.write(u"log.csv"_s, sample.read(32 * 1024));
    QVERIFY(QFile::copy(sampleFolder + u"/club-race.ldx"_s, files.path(u"log.ldx"_s)));
    QPluginLoader loader(libraryPath);
    auto *const plugin = qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance());
    QVERIFY(plugin);
    qint64 after = 0;
    for (int i = 0; i < 1000; ++i) {
        QVERIFY(!plugin->import(path, QString(), {}).isEmpty());
        if (i == 10)
            after = residentPages();
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    constexpr qint64 tolerance = 256; // pages: one mebibyte, where a leak of one byte in a hundred would be thirty
    QVERIFY2(residentPages() - after <= tolerance, QByteArray::number(residentPages() - after).constData());
#endif
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
