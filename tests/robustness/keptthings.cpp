// Loaded by tst_unloading, and unloaded with the library that it links: hands out what a host may keep of that.

#include "ld/ldx.h"
#include "ld/loadlaps.h"
#include "plugin/plugininterfaceimport.h"
#include "sdk/sdk_utils.h"

#include <QtCore/QPluginLoader>

using namespace KOV::SDK;

namespace {

void keep(const QList<QSharedPointer<Lap>> &laps, QStringList &texts, QVariantList &values)
{
    for (const QSharedPointer<Lap> &lap : laps) {
        const LapHeader &header = lap->header();
        texts += {header.venueName,
                  header.carInfo.carName,
                  header.carInfo.driverName,
                  header.carInfo.sourceName,
                  header.carInfo.pluginName,
                  sessionName(header.session),
                  carStatusToString(header.carInfo.status)};
        for (const QString &name : lap->getAvailableRecordedChannels())
            texts += {name, lap->channel(name)->unit()};
        for (const auto &[name, value] : header.dynamicData.asRange()) {
            texts += {name, value.unit()};
            values += value;
        }
    }
}

} // namespace

extern "C" Q_DECL_EXPORT void keepThings(const QString &library, const QString &log, QStringList &texts,
                                         QVariantList &values)
{
    QPluginLoader loader;
    loader.setLoadHints({});
    loader.setFileName(library);
    auto *const plugin = qobject_cast<PluginInterfaceImport *>(loader.instance());
    QObject::connect(plugin->dataEmitter(), &DataEmitter::sendMessage,
                     [&texts](const QString &text, int) { texts += text; });
    texts += {plugin->pluginName(), plugin->sourceName(), plugin->pluginVersion()};
    texts += plugin->availableImportFormats();
    keep(plugin->import(log + QLatin1String(".csv"), texts.constLast(), {}), texts, values);
    keep(loadLaps(log + QLatin1String(".ld")), texts, values);
    texts += sessionName(static_cast<Session>(100));
    delete loader.instance();
    loader.unload();
}
