// A Qt plug-in that implements nothing. The build chooses which interface its record names.

#include <QtCore/QObject>
#include <QtCore/QtPlugin>

class EmptyPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID EMPTY_PLUGIN_IID)
};

#include "emptyplugin.moc"
