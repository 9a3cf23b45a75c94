// Imports a log through the installed plug-in, by what is installed alone: main LOG prints the laps it got.

#include <orva/plugin/plugininterfaceimport.h>
#include <orva/sdk/sdk_utils.h>

#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>

#include <cstdio>

using namespace KOV::SDK;

int main(int argumentCount, char **arguments)
{
    QPluginLoader loader(QStringLiteral(PLUGIN_FILE));
    if (loader.metaData().value(QLatin1String("IID")) != QLatin1String(PluginInterfaceImport_iid))
        return std::fprintf(stderr, "no import plug-in: %s\n", qPrintable(loader.errorString())), 1;
    auto *plugin = qobject_cast<PluginInterfaceImport *>(loader.instance());
    if (!plugin || argumentCount != 2)
        return std::fprintf(stderr, "cannot load: %s\n", qPrintable(loader.errorString())), 1;

    int messages = 0;
    const auto print = [&messages](const QString &text, int level) {
        ++messages;
        std::printf("%d %s\n", level, qPrintable(text));
    };
    int others = 0;
    DataEmitter *emitter = plugin->dataEmitter();
    const auto count = [emitter, &others](auto signal) {
        return static_cast<bool>(QObject::connect(emitter, signal, [&others] { ++others; }));
    };
    if (!QObject::connect(emitter, &DataEmitter::sendMessage, print) || !count(&DataEmitter::sendConnected) ||
        !count(&DataEmitter::sendDisconnected) || !count(&DataEmitter::sendNotConnected) ||
        !count(&DataEmitter::sendConnectivityAvailable) || !count(&DataEmitter::sendTelemetryLap) ||
        !count(&DataEmitter::sendTelemetryLapHeader) || !count(&DataEmitter::sendCarListChanged) ||
        !count(&DataEmitter::sendSample) || !count(&DataEmitter::sendSessionInfo) || !count(&DataEmitter::sendProgress))
        return std::fprintf(stderr, "a signal cannot be connected\n"), 1;

    const QString format = plugin->availableImportFormats().constFirst();
    const QList<QSharedPointer<Lap>> laps = plugin->import(QString::fromLocal8Bit(arguments[1]), format, {});
    for (const QSharedPointer<Lap> &lap : laps) {
        std::printf("%d: %s, %s, %lld samples in %lld channels\n", lap->header().lapNumber,
                    qPrintable(sessionName(lap->header().session)),
                    qPrintable(lap->header().lapTime.toString(QStringLiteral("m:ss.zzz"))), lap->size(),
                    static_cast<long long>(lap->getAvailableRecordedChannels().size()));
    }
    const bool complete = laps.size() > 1 && !laps.constFirst()->isEmpty() && messages == 2 && others == 0;
    return complete ? 0 : 1;
}
