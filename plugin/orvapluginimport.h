#pragma once

// The root object that a host gets from the library. What it hands a file to: csv/orvareader.h.

#include "plugin/plugininterfaceimport.h"

#include <QtCore/QObject>

/// Imports the comma-separated export of MoTeC tools. Holds no state: any number of imports, on any threads.
class ORVAPluginImport : public QObject, public KOV::SDK::PluginInterfaceImport
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "kovdata.PluginInterfaceImport/0.2")
    Q_INTERFACES(KOV::SDK::PluginInterfaceImport)

public:
    QString pluginName() const override;
    QString sourceName() const override;
    QString pluginVersion() const override;
    QList<QString> availableImportFormats() const override;
    /// Reads the export at @p path, with the sidecar beside it; see ORVAReader::importLaps.
    ///
    /// Sends two messages first. @p format is only named in the second of them, and @p options are not read: there is
    /// one format and nothing to set.
    QList<QSharedPointer<KOV::SDK::Lap>> import(const QString &path, const QString &format,
                                                const QMap<QString, QVariant> &options) override;
};
