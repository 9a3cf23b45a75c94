#pragma once

// What a host sees of any import plug-in. This library's own: orvapluginimport.h.

#include "orva_export.h"
#include "sdk/dataemitter.h"
#include "sdk/lap.h"

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtCore/QtPlugin>

/// How a host tells import plug-ins from other libraries, before any of their code runs.
#define PluginInterfaceImport_iid "kovdata.PluginInterfaceImport/0.2" // NOLINT(cppcoreguidelines-macro-usage): moc's

namespace KOV::SDK {

/// The contract between a host and an import plug-in.
///
/// A plug-in's root object derives from QObject first and from this class second, has PluginInterfaceImport_iid in its
/// Q_PLUGIN_METADATA and this class in its Q_INTERFACES, and implements the five pure operations; the rest comes with
/// this class. The host gets the root object from QPluginLoader and reaches this part of it with qobject_cast. Hosts
/// that were built earlier rely on the order of the virtual functions.
class ORVA_EXPORT PluginInterfaceImport
{
public:
    PluginInterfaceImport();
    virtual ~PluginInterfaceImport();

    /// The plug-in's name, with which every message begins.
    virtual QString pluginName() const = 0;
    /// Where the plug-in's data come from.
    virtual QString sourceName() const = 0;
    virtual QString pluginVersion() const = 0;
    /// The formats for a file dialogue, such as "Comma separated text (*.csv)".
    virtual QList<QString> availableImportFormats() const = 0;
    /// Reads the file at @p path and returns its laps.
    ///
    /// @p format is one of availableImportFormats(), @p options are the plug-in's own. Blocks until the file is read.
    /// There is no error: a file that cannot be read gives no laps.
    virtual QList<QSharedPointer<KOV::SDK::Lap>> import(const QString &path, const QString &format,
                                                        const QMap<QString, QVariant> &options) = 0;

    /// The plug-in's signal hub: never null, and the same object for the life of the plug-in, which owns it.
    DataEmitter *dataEmitter() { return &emitter; }
    /// Emits DataEmitter::sendMessage on the caller's thread, with "[" + pluginName() + " plugin] " before @p text and
    /// with @p verbose unchanged.
    void message(const QString &text, int verbose);

private:
    Q_DISABLE_COPY_MOVE(PluginInterfaceImport)

    DataEmitter emitter;
};

} // namespace KOV::SDK

Q_DECLARE_INTERFACE(KOV::SDK::PluginInterfaceImport, PluginInterfaceImport_iid)
