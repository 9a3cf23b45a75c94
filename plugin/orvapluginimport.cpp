#include "plugin/orvapluginimport.h"

#include "csv/orvareader.h"

#include <utility>

// Not QStringLiteral: what a host gets must outlive the library, which hosts may unload.

QString ORVAPluginImport::pluginName() const
{
    return QLatin1String("Motec's CSV import plugin");
}

QString ORVAPluginImport::sourceName() const
{
    return QLatin1String("MoTeC");
}

QString ORVAPluginImport::pluginVersion() const
{
    return QLatin1String("0.1");
}

QList<QString> ORVAPluginImport::availableImportFormats() const
{
    return {QLatin1String("Comma separated text (*.csv)")};
}

QList<QSharedPointer<KOV::SDK::Lap>> ORVAPluginImport::import(const QString &path, const QString &format,
                                                              const QMap<QString, QVariant> & /*options*/)
{
    ORVAReader reader(nullptr);
    message(QLatin1String("Importing file ") + path + QLatin1String(" ..."), 0);
    message(QLatin1String("Using format ") + format, 0);
    QList<QSharedPointer<KOV::SDK::Lap>> laps = reader.importLaps(path);
    for (const QSharedPointer<KOV::SDK::Lap> &lap : std::as_const(laps)) {
        lap->header().carInfo.sourceName = sourceName();
        lap->header().carInfo.pluginName = pluginName();
    }
    return laps;
}
