// A library that comes and goes, in a program that does not link it and so really lets go of it.

#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QPluginLoader>

using namespace Testing;

class TestUnloading : public QObject
{
    Q_OBJECT

    static QByteArray fileOfProcess(const QString &name)
    {
        QFile file(u"/proc/self/"_s + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static qint64 residentPages() { return fileOfProcess(u"statm"_s).split(' ').value(1).toLongLong(); }

private Q_SLOTS:
    void hundredTimes()
    {
        qint64 settled = 0;
        for (int i = 0; i < 100; ++i) {
            QPluginLoader loader;
            loader.setLoadHints({}); // before the name: otherwise newer Qt keeps what it has loaded
            loader.setFileName(QStringLiteral(ORVA_LIBRARY));
            auto *const plugin = qobject_cast<KOV::SDK::PluginInterfaceImport *>(loader.instance());
            QVERIFY2(plugin, qPrintable(loader.errorString()));
            QCOMPARE(plugin->import(QStringLiteral(SAMPLE_FOLDER "/tools-export.csv"), {}, {}).isEmpty(), false);
            QVERIFY(fileOfProcess(u"maps"_s).contains("liborva"));
            delete loader.instance();
            QVERIFY2(loader.unload(), qPrintable(loader.errorString()));
            QVERIFY(!fileOfProcess(u"maps"_s).contains("liborva"));
            if (i == 10)
                settled = residentPages();
        }
        QVERIFY(isSanitized || residentPages() - settled <= 256); // pages of one mebibyte
    }
};

QTEST_GUILESS_MAIN(TestUnloading)
#include "tst_unloading.moc"
