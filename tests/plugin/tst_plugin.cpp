// The library as a host meets it: its record, its root object, an import, and two imports at once.

#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QCborMap>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>
#include <QtCore/QPointer>
#include <QtCore/QtPlugin>

#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <thread>

using namespace KOV::SDK;
using namespace Testing;

namespace {

const auto libraryPath = QStringLiteral(ORVA_LIBRARY);
const auto interfaceId = u"kovdata.PluginInterfaceImport/0.2"_s;
using Messages = QList<std::pair<QString, int>>;

template <typename Function>
Function resolved(const char *name)
{
    return reinterpret_cast<Function>(QLibrary::resolve(libraryPath, name));
}

/// An export of @p lapCount laps of 100 rows each, the last one cut short; lap N takes 80 + N seconds.
QByteArray exportOf(int lapCount)
{
    QByteArray text = "\"Venue\",\"Ring\"\n\nLap Dist Pct,Lap Last Lap Time,Speed\n%,s,m/s\n\n";
    for (int row = 0; row < lapCount * 100 - 10; ++row)
        text += u"%1,%2,%3\n"_s.arg(row % 100).arg(79 + row / 100).arg(row * 0.25).toLatin1();
    return text;
}

/// A plug-in beside the library's own, whose name changes each time that it is asked for.
class OtherPlugin : public PluginInterfaceImport
{
public:
    QString pluginName() const override { return names + QString::number(++asked); }
    QString sourceName() const override { return {}; }
    QString pluginVersion() const override { return {}; }
    QList<QString> availableImportFormats() const override { return {}; }
    Laps import(const QString &, const QString &, const QMap<QString, QVariant> &) override { return {}; }

    QString names;
    mutable int asked = 0;
};

/// Adds what @p plugin says to @p messages from now on.
void collect(PluginInterfaceImport *plugin, Messages &messages)
{
    QObject::connect(plugin->dataEmitter(), &DataEmitter::sendMessage, [&messages](const QString &text, int level) {
        messages.append({text, level});
    });
}

} // namespace

class TestPlugin : public QObject
{
    Q_OBJECT

    PluginInterfaceImport *plugin = nullptr;
    QPluginLoader loader{libraryPath};

private Q_SLOTS:
    /// Connections end with the emitter, so each test begins with a new root object.
    void init()
    {
        delete loader.instance();
        QVERIFY2(loader.instance(), qPrintable(loader.errorString()));
        plugin = qobject_cast<PluginInterfaceImport *>(loader.instance());
        QVERIFY(plugin);
    }

    void record()
    {
        const auto query = resolved<QtPluginMetaDataFunction>("qt_plugin_query_metadata_v2");
        QVERIFY(query);
        const QPluginMetaData found = query();
        const QByteArray bytes(static_cast<const char *>(found.data), static_cast<qsizetype>(found.size));
        QPluginMetaData::Header head; // of the Qt in use
        QVERIFY(std::memcmp(bytes.data(), &head, sizeof(head)) == 0);
        const QCborMap map = QCborValue::fromCbor(bytes.mid(sizeof(head))).toMap();
        QCOMPARE(map, QCborMap({{2, interfaceId}, {3, u"ORVAPluginImport"_s}}));
    }

    void rootObject()
    {
        const auto instance = resolved<QtPluginInstanceFunction>("qt_plugin_instance");
        QVERIFY(instance);
        QPointer<QObject> first = instance();
        QVERIFY(first);
        QCOMPARE(instance(), first.data());
        QCOMPARE(loader.instance(), first.data());
        first->setObjectName(u"first"_s);
        delete first.data();
        QVERIFY(instance());
        QCOMPARE(instance()->objectName(), QString());
        QCOMPARE(instance()->parent(), nullptr);
        QCOMPARE(instance()->metaObject()->methodCount(), QObject::staticMetaObject.methodCount());
    }

    void metaCast()
    {
        QObject *root = loader.instance();
        void *const interface = plugin;
        QVERIFY(interface != root);
        QCOMPARE(root->qt_metacast("KOV::SDK::PluginInterfaceImport"), interface);
        QCOMPARE(root->qt_metacast("kovdata.PluginInterfaceImport/0.2"), interface);
        QCOMPARE(root->qt_metacast("ORVAPluginImport"), root);
        QCOMPARE(root->qt_metacast("QObject"), root);
        QCOMPARE(root->qt_metacast("kovdata.PluginInterfaceImport/0.1"), nullptr);
        QCOMPARE(root->qt_metacast(nullptr), nullptr);
    }

    void identity()
    {
        QCOMPARE(plugin->pluginName(), u"Motec's CSV import plugin"_s);
        QCOMPARE(plugin->sourceName(), u"MoTeC"_s);
        QCOMPARE(plugin->pluginVersion(), u"0.1"_s);
        QCOMPARE(plugin->availableImportFormats(), QStringList{u"Comma separated text (*.csv)"_s});
        OtherPlugin other;
        QVERIFY(plugin->dataEmitter());
        QCOMPARE(plugin->dataEmitter(), plugin->dataEmitter());
        QVERIFY(plugin->dataEmitter() != other.dataEmitter());
        QCOMPARE(plugin->dataEmitter()->parent(), nullptr);
    }

    void imports_data()
    {
        const Table<int, QString, QMap<QString, QVariant>> row("laps", "format", "options"); // no laps mean no file
        row("no file", 0, u"Comma separated text (*.csv)"_s, {});
        row("a file", 2, u"Comma separated text (*.csv)"_s, {});
        row("another format", 2, u"Binary (*.ld)"_s, {});
        row("no format, options", 3, {}, {{u"laps"_s, 1}});
    }
    void imports()
    {
        using Options = QMap<QString, QVariant>;
        QFETCH(int, laps);
        QFETCH(QString, format);
        QFETCH(Options, options);
        const Files files;
        const QString path = files.path(u"a log.csv"_s);
        if (laps > 0)
            files.write(u"a log.csv"_s, exportOf(laps));
        Messages messages;
        collect(plugin, messages);
        const Laps result = plugin->import(path, format, options);
        QCOMPARE(messages, Messages({{u"[Motec's CSV import plugin plugin] Importing file "_s + path + u" ..."_s, 0},
                                     {u"[Motec's CSV import plugin plugin] Using format "_s + format, 0}}));
        QCOMPARE(result.size(), laps);
        for (const QSharedPointer<Lap> &lap : result) {
            QCOMPARE(lap->header().carInfo.sourceName, u"MoTeC"_s);
            QCOMPARE(lap->header().carInfo.pluginName, u"Motec's CSV import plugin"_s);
            QCOMPARE(lap->header().venueName, u"Ring"_s);
        }
    }

    void messagePrefix()
    {
        OtherPlugin other;
        other.names = u"name %1 "_s;
        Messages messages;
        collect(&other, messages);
        other.message(u" a text. "_s, 1);
        other.message(u"[x] 100 %1"_s, std::numeric_limits<int>::min());
        other.message({}, std::numeric_limits<int>::max());
        QCOMPARE(messages, Messages({{u"[name %1 1 plugin]  a text. "_s, 1},
                                     {u"[name %1 2 plugin] [x] 100 %1"_s, std::numeric_limits<int>::min()},
                                     {u"[name %1 3 plugin] "_s, std::numeric_limits<int>::max()}}));
    }

    void importsAtOnce()
    {
        const Files files;
        std::atomic<int> heard = 0;
        connect(plugin->dataEmitter(), &DataEmitter::sendMessage, [&heard] { ++heard; });
        std::array<Laps, 2> results;
        const auto import = [&](std::size_t i, const QString &path) {
            for (int times = 0; times < 3; ++times)
                results[i] = plugin->import(path, QString(), {});
        };
        std::thread first(import, 0, files.write(u"first.csv"_s, exportOf(4)));
        std::thread second(import, 1, files.write(u"second.csv"_s, exportOf(5)));
        first.join();
        second.join();
        QCOMPARE(heard, 12);
        QVERIFY(results[0].size() == 4 && results[1].size() == 5);
        for (const Laps &laps : results) {
            QVERIFY(areSound(laps));
            for (qsizetype lap = 0; lap + 1 < laps.size(); ++lap) {
                QCOMPARE(laps[lap]->size(), 100);
                QCOMPARE(laps[lap]->header().lapTime, QTime(0, 1, 20 + static_cast<int>(lap)));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestPlugin)
#include "tst_plugin.moc"
