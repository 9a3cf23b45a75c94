#pragma once

// The root object that a host gets from the library. It passes files to csv/orvareader.h.

#include "plugin/plugininterfaceimport.h"

#include <QtCore/QObject>

/// Imports the comma-separated export of MoTeC tools. Holds no state: any number of imports, on any threads.
class ORVAPluginImport : public QObject, public KOV::SDK::PluginInterfaceImport
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PluginInterfaceImport_iid)
    Q_INTERFACES(KOV::SDK::PluginInterfaceImport)

public:
    QString pluginName() const override;
    QString sourceName() const override;
    QString pluginVersion() const override;
    QList<QString> availableImportFormats() const override;
    /// Reads the export at @p path, with the sidecar beside it; see ORVAReader::importLaps.
    ///
    /// Sends two messages before it reads. The second one names @p format, which has no other effect, and @p options
    /// are ignored: there is one format and nothing to set.
    QList<QSharedPointer<KOV::SDK::Lap>> import(const QString &path, const QString &format,
                                                const QMap<QString, QVariant> &options) override;
};
