// The library as a host meets it: its record, its root object, an import, and two imports at once.

#include "plugin/plugininterfaceimport.h"
#include "testing.h"

#include <QtCore/QCborMap>
#include <QtCore/QJsonObject>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>
#include <QtCore/QPointer>
#include <QtCore/QtPlugin>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>

using namespace KOV::SDK;
using namespace Qt::StringLiterals;

namespace {

const auto libraryPath = QStringLiteral(ORVA_LIBRARY);
const auto interfaceId = QStringLiteral("kovdata.PluginInterfaceImport/0.2");
using Messages = QList<std::pair<QString, int>>;

template <typename Function>
Function resolved(const char *name)
{
    return reinterpret_cast<Function>(QLibrary::resolve(libraryPath, name));
}

/// An export of @p lapCount laps of 100 rows each, the last one cut short; lap N takes 80 + N seconds.
QByteArray exportOf(int lapCount)
{
    QByteArray text = "\"Venue\",\"Ring\"\n\nLap Dist Pct,Lap Number,Lap Last Lap Time,Speed\n%,,s,m/s\n\n";
    for (int row = 0; row < lapCount * 100 - 10; ++row) {
        const int lap = row / 100;
        text += QByteArray::number(row % 100) + ',' + QByteArray::number(lap) + ',' + QByteArray::number(80 + lap - 1) +
                ',' + QByteArray::number(row * 0.25) + '\n';
    }
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
    QList<QSharedPointer<Lap>> import(const QString &, const QString &, const QMap<QString, QVariant> &) override
    {
        return {};
    }

    QString names;
    mutable int asked = 0;
};

/// Collects what @p plugin says for the life of the result.
std::unique_ptr<Messages> messagesOf(PluginInterfaceImport *plugin)
{
    auto messages = std::make_unique<Messages>();
    QObject::connect(plugin->dataEmitter(), &DataEmitter::sendMessage,
                     [sink = messages.get()](const QString &text, int level) {
                         sink->append({text, level});
                     });
    return messages;
}

} // namespace

class TestPlugin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void loaderReadsTheRecord();
    void record();
    void rootObject();
    void metaCast();
    void identity();
    void imports_data();
    void imports();
    void messagePrefix_data();
    void messagePrefix();
    void importsAtOnce();

private:
    PluginInterfaceImport *plugin = nullptr;
    QPluginLoader loader{libraryPath};
};

/// Connections end with the emitter, so each test begins with a new root object.
void TestPlugin::init()
{
    delete loader.instance();
    QVERIFY2(loader.instance(), qPrintable(loader.errorString()));
    plugin = qobject_cast<PluginInterfaceImport *>(loader.instance());
    QVERIFY(plugin);
}

void TestPlugin::loaderReadsTheRecord()
{
    const QJsonObject record = QPluginLoader(libraryPath).metaData();
    QCOMPARE(record[u"IID"_s], interfaceId);
    QCOMPARE(record[u"className"_s], u"ORVAPluginImport"_s);
    // The loader's own additions, from the head of the record; newer Qt names the architecture too.
    for (const QString &key : record.keys())
        QVERIFY2(QStringList({u"IID"_s, u"className"_s, u"version"_s, u"debug"_s, u"archlevel"_s}).contains(key),
                 qPrintable(key));
}

void TestPlugin::record()
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

void TestPlugin::rootObject()
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

void TestPlugin::metaCast()
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

void TestPlugin::identity()
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

void TestPlugin::imports_data()
{
    QTest::addColumn<int>("laps"); // in the file; none means no file
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("withOptions");
    QTest::newRow("no file") << 0 << u"Comma separated text (*.csv)"_s << false;
    QTest::newRow("a file") << 2 << u"Comma separated text (*.csv)"_s << false;
    QTest::newRow("another format") << 2 << u"Binary (*.ld)"_s << false;
    QTest::newRow("no format, options") << 3 << QString() << true;
}

void TestPlugin::imports()
{
    QFETCH(int, laps);
    QFETCH(QString, format);
    QFETCH(bool, withOptions);
    const Testing::Files files;
    const QString path = files.path(u"a log.csv"_s);
    if (laps > 0)
        files.write(u"a log.csv"_s, exportOf(laps));
    const auto messages = messagesOf(plugin);
    QMap<QString, QVariant> options;
    if (withOptions)
        options.insert(u"laps"_s, 1);
    const QList<QSharedPointer<Lap>> result = plugin->import(path, format, options);
    QCOMPARE(*messages, Messages({{u"[Motec's CSV import plugin plugin] Importing file "_s + path + u" ..."_s, 0},
                                  {u"[Motec's CSV import plugin plugin] Using format "_s + format, 0}}));
    QCOMPARE(result.size(), laps);
    for (const QSharedPointer<Lap> &lap : result) {
        QCOMPARE(lap->header().carInfo.sourceName, u"MoTeC"_s);
        QCOMPARE(lap->header().carInfo.pluginName, u"Motec's CSV import plugin"_s);
        QCOMPARE(lap->header().venueName, u"Ring"_s);
    }
}

void TestPlugin::messagePrefix_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("level");
    QTest::newRow("text") << u" a text. "_s << 1;
    QTest::newRow("negative level") << u"[x] 100 %1"_s << -2147483647 - 1;
    QTest::newRow("no text") << QString() << 2147483647;
}

void TestPlugin::messagePrefix()
{
    QFETCH(QString, text);
    QFETCH(int, level);
    OtherPlugin other;
    other.names = u"name %1 "_s;
    const auto messages = messagesOf(&other);
    other.message(text, level);
    other.message(text, level);
    QCOMPARE(*messages, Messages({{u"[name %1 1 plugin] "_s + text, level}, {u"[name %1 2 plugin] "_s + text, level}}));
}

void TestPlugin::importsAtOnce()
{
    const Testing::Files files;
    std::array<QString, 2> paths;
    std::array<QList<QSharedPointer<Lap>>, 2> results;
    std::atomic<int> heard = 0;
    connect(plugin->dataEmitter(), &DataEmitter::sendMessage, [&heard] { ++heard; });
    const auto lapCount = [](std::size_t i) { return 4 + static_cast<int>(i); };
    for (std::size_t i = 0; i < paths.size(); ++i)
        paths[i] = files.write(QString::number(i) + u".csv"_s, exportOf(lapCount(i)));
    const auto import = [&](std::size_t i) {
        for (int times = 0; times < 3; ++times)
            results[i] = plugin->import(paths[i], QString(), {});
    };
    std::thread first(import, 0U);
    std::thread second(import, 1U);
    first.join();
    second.join();
    QCOMPARE(heard, 12);
    for (std::size_t i = 0; i < results.size(); ++i) {
        QCOMPARE(results[i].size(), lapCount(i));
        for (qsizetype lap = 0; lap + 1 < results[i].size(); ++lap) {
            QCOMPARE(results[i][lap]->size(), 100);
            QCOMPARE(results[i][lap]->header().lapTime, QTime(0, 1, 20 + static_cast<int>(lap)));
        }
    }
}

QTEST_GUILESS_MAIN(TestPlugin)
#include "tst_plugin.moc"
