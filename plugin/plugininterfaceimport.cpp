#include "plugin/plugininterfaceimport.h"

namespace KOV::SDK {

PluginInterfaceImport::PluginInterfaceImport()
    : emitter(nullptr)
{
}

PluginInterfaceImport::~PluginInterfaceImport() = default;

void PluginInterfaceImport::message(const QString &text, int verbose)
{
    const QString prefixed = QLatin1String("[") + pluginName() + QLatin1String(" plugin] ") + text;
    Q_EMIT emitter.sendMessage(prefixed, verbose);
}

} // namespace KOV::SDK
