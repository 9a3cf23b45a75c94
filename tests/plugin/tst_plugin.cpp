// The library as a host meets it: its record, its root object, an import, and two imports at once.

#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>
#include <QtTest/QSignalSpy>

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <thread>

using namespace KOV::SDK;
using namespace Testing;

namespace {

/// An export of @p lapCount laps of 100 rows each, the last one cut short; lap N takes 80 + N seconds.
QByteArray exportOf(int lapCount)
{
    QByteArray text = "\"Venue\",\"Ring\"\n\nLap Dist Pct,Lap Last Lap Time,Speed\n%,s,m/s\n\n";
    for (int row = 0; row < lapCount * 100 - 10; ++row)
        text += u"%1,%2,%3\n"_s.arg(row % 100).arg(79 + row / 100).arg(row * 0.25).toLatin1();
    return text;
}

/// A plug-in beside the library's own.
class OtherPlugin : public PluginInterfaceImport
{
public:
    QString name = u"name %1"_s;

    QString pluginName() const override { return name; }
    QString sourceName() const override { return {}; }
    QString pluginVersion() const override { return {}; }
    QList<QString> availableImportFormats() const override { return {}; }
    Laps import(const QString &, const QString &, const QMap<QString, QVariant> &) override { return {}; }
};

} // namespace

class TestPlugin : public QObject
{
    Q_OBJECT

    PluginInterfaceImport *plugin = nullptr;
    QPluginLoader loader{QStringLiteral(ORVA_LIBRARY)};

private Q_SLOTS:
    void initTestCase()
    {
        plugin = qobject_cast<PluginInterfaceImport *>(loader.instance());
        QVERIFY2(plugin, qPrintable(loader.errorString()));
    }

    void identity()
    {
        const QJsonObject record = loader.metaData();
        QCOMPARE(record[u"IID"].toString(), u"kovdata.PluginInterfaceImport/0.2"_s);
        QCOMPARE(record[u"className"].toString(), u"ORVAPluginImport"_s);
        QVERIFY(!record.contains(u"MetaData"_s));

        QObject *root = loader.instance();
        QVERIFY(static_cast<void *>(plugin) != root);
        for (const char *name : {"KOV::SDK::PluginInterfaceImport", PluginInterfaceImport_iid})
            QCOMPARE(root->qt_metacast(name), static_cast<void *>(plugin));
        QCOMPARE(root->metaObject()->methodCount(), QObject::staticMetaObject.methodCount());

        QCOMPARE(plugin->pluginName(), u"Motec's CSV import plugin"_s);
        QCOMPARE(plugin->sourceName(), u"MoTeC"_s);
        QCOMPARE(plugin->pluginVersion(), u"0.1"_s);
        QCOMPARE(plugin->availableImportFormats(), QStringList{u"Comma separated text (*.csv)"_s});
        QVERIFY(plugin->dataEmitter() && plugin->dataEmitter() == plugin->dataEmitter());
        QVERIFY(plugin->dataEmitter() != OtherPlugin().dataEmitter());
    }

    // Hosts that were built earlier call by the place in the table, which begins with two entries for the destructor.
    void virtualFunctionsInOrder()
    {
        const auto placeOf = [](auto function) {
            return std::bit_cast<std::array<std::ptrdiff_t, 2>>(function)[0] / std::ptrdiff_t{sizeof(void *)};
        };
        using Interface = PluginInterfaceImport;
        const std::ptrdiff_t places[]{placeOf(&Interface::pluginName), placeOf(&Interface::sourceName),
                                      placeOf(&Interface::pluginVersion), placeOf(&Interface::availableImportFormats),
                                      placeOf(&Interface::import)};
        for (int i = 0; i < 5; ++i)
            QCOMPARE(places[i], 2 + i);
    }

    void imports()
    {
        const Files files;
        for (const int lapCount : {0, 2, 3}) { // none: there is no file
            const QString path = files.path(u"a log.csv"_s);
            const QString format = u"Binary (*.%1)"_s.arg(lapCount); // whatever it is
            const QSignalSpy spy(plugin->dataEmitter(), &DataEmitter::sendMessage);
            QObject lateWriter; // the messages come before the file is read
            connect(plugin->dataEmitter(), &DataEmitter::sendMessage, &lateWriter, [&] {
                if (lapCount > 0 && spy.size() == 2)
                    files.write(u"a log.csv"_s, exportOf(lapCount));
            });
            const Laps laps = plugin->import(path, format, {{u"laps"_s, 1}});
            QCOMPARE(spy.size(), 2);
            QCOMPARE(spy[0],
                     QVariantList({u"[Motec's CSV import plugin plugin] Importing file "_s + path + u" ..."_s, 0}));
            QCOMPARE(spy[1], QVariantList({u"[Motec's CSV import plugin plugin] Using format "_s + format, 0}));
            QCOMPARE(laps.size(), lapCount);
            for (const QSharedPointer<Lap> &lap : laps) {
                QCOMPARE(lap->header().carInfo.sourceName, u"MoTeC"_s);
                QCOMPARE(lap->header().carInfo.pluginName, u"Motec's CSV import plugin"_s);
            }
        }
    }

    void messagePrefix()
    {
        OtherPlugin other;
        const QSignalSpy spy(other.dataEmitter(), &DataEmitter::sendMessage);
        other.message(u" a text. "_s, -7);
        other.message(u"[x] 100 %1"_s, 100);
        other.name = u"renamed"_s;
        other.message({}, 0);
        QCOMPARE(spy[0], QVariantList({u"[name %1 plugin]  a text. "_s, -7}));
        QCOMPARE(spy[1], QVariantList({u"[name %1 plugin] [x] 100 %1"_s, 100}));
        QCOMPARE(spy[2], QVariantList({u"[renamed plugin] "_s, 0}));
    }

    void importsAtOnce()
    {
        const Files files;
        std::atomic<int> heard = 0;
        connect(plugin->dataEmitter(), &DataEmitter::sendMessage, [&heard] { ++heard; });
        std::array<Laps, 2> results;
        const auto import = [&](std::size_t i, const QString &path) { results[i] = plugin->import(path, {}, {}); };
        std::thread first(import, 0, files.write(u"first.csv"_s, exportOf(4)));
        std::thread second(import, 1, files.write(u"second.csv"_s, exportOf(5)));
        first.join();
        second.join();
        QCOMPARE(heard, 4);
        QVERIFY(results[0].size() == 4 && results[1].size() == 5);
        for (const Laps &laps : results) {
            QVERIFY(areSound(laps));
            QCOMPARE(laps[2]->header().lapTime, QTime(0, 1, 22));
            QCOMPARE(laps[2]->size(), 100);
        }
    }
};

QTEST_GUILESS_MAIN(TestPlugin)
#include "tst_plugin.moc"
