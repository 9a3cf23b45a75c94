// A library that is loaded and unloaded, by a program that does not link it and so really lets go of it.

#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QLibrary>
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
        QVERIFY(!isMemoryOurs || residentPages() - settled <= 256); // pages of one mebibyte
    }

    void whatIsKeptStays()
    {
        QStringList texts;
        QVariantList values;
        QLibrary library(QStringLiteral(KEPT_THINGS));
        const auto keepThings =
            reinterpret_cast<void (*)(const QString &, const QString &, QStringList &, QVariantList &)>(
                library.resolve("keepThings"));
        QVERIFY2(keepThings, qPrintable(library.errorString()));
        keepThings(QStringLiteral(ORVA_LIBRARY), QStringLiteral(SAMPLE_FOLDER "/club-race"), texts, values);
        QStringList copies;
        for (const QString &text : std::as_const(texts))
            copies += QString(text.constData(), text.size());
        QVERIFY(library.unload());
        QVERIFY(!fileOfProcess(u"maps"_s).contains("liborva"));
        QCOMPARE(texts, copies);
        for (const QString &text : {u"MoTeC"_s, u"pu"_s, u"Race"_s, u"Not connected"_s, u"bar"_s, u"lapdistpct"_s})
            QVERIFY2(texts.contains(text), qPrintable(text));
        QVERIFY(values.contains(1.45) && values.contains(u"Medium"_s));
    }
};

QTEST_GUILESS_MAIN(TestUnloading)
#include "tst_unloading.moc"
