#pragma once

// A complete import plug-in: reads text with a time in seconds and a speed in metres per second on each line.

#include <orva/plugin/plugininterfaceimport.h>

#include <QtCore/QObject>

// QObject comes first, and no further base that is a QObject.
class TimeSpeedImport : public QObject, public KOV::SDK::PluginInterfaceImport
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PluginInterfaceImport_iid)
    Q_INTERFACES(KOV::SDK::PluginInterfaceImport)

public:
    QString pluginName() const override;
    QString sourceName() const override;
    QString pluginVersion() const override;
    QList<QString> availableImportFormats() const override;
    QList<QSharedPointer<KOV::SDK::Lap>> import(const QString &path, const QString &format,
                                                const QMap<QString, QVariant> &options) override;
};
