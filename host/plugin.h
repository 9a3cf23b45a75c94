#pragma once

// The import plug-in as this program uses it: found, checked and loaded as any host would.

#include "plugin/plugininterfaceimport.h"

#include <QtCore/QPluginLoader>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Host {

/// Where the library's own plug-in is looked for, in this order: beside the program, in the build tree, in the
/// installed place.
QStringList pluginPlaces();

/// A loaded plug-in. It stays loaded for the rest of the process, since laps may hold what lies in its code.
class Plugin
{
public:
    /// Loads the library @p path, or the first of pluginPlaces() if it is empty. Looks at the interface identifier
    /// before any code of the library runs. Throws Failure.
    explicit Plugin(const QString &path);

    /// Never null.
    KOV::SDK::PluginInterfaceImport *interface() const { return root; }
    /// Whether this is the plug-in of the library that this program comes with.
    bool isOwn() const;

private:
    QPluginLoader loader;
    KOV::SDK::PluginInterfaceImport *root = nullptr;
};

} // namespace Host
