#include "host/plugin.h"

#include "host/failure.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonObject>

using KOV::SDK::PluginInterfaceImport;

namespace Host {

namespace {

constexpr QLatin1String ownClassName("ORVAPluginImport");

// QPluginLoader searches the library paths for a relative name, so it gets an absolute one.
QString libraryFile(const QString &path)
{
    if (!path.isEmpty()) {
        const QFileInfo file(path);
        if (!file.exists())
            throw Failure(path + QLatin1String(": no such file, expected an import plug-in"));
        if (!file.isFile())
            throw Failure(path + QLatin1String(": not a regular file, expected an import plug-in"));
        return file.absoluteFilePath();
    }
    const QStringList places = pluginPlaces();
    for (const QString &place : places) {
        if (QFileInfo(place).isFile())
            return place;
    }
    throw Failure(QLatin1String("import plug-in not found; looked for ") + places.join(QLatin1String(", ")) +
                  QLatin1String("; name one with --plugin"));
}

// Qt's texts for people may run over several lines and repeat the file's name.
QString reason(const QPluginLoader &loader)
{
    return loader.errorString().simplified();
}

} // namespace

QStringList pluginPlaces()
{
    QStringList places;
    const QDir programs(QCoreApplication::applicationDirPath());
    for (const char *directory : {".", "../lib", ORVA_LIBDIR_FROM_BINDIR}) {
        const QString place = QDir::cleanPath(
            programs.absoluteFilePath(QFile::decodeName(directory) + QLatin1String("/" ORVA_LIBRARY_FILE)));
        if (!places.contains(place))
            places.append(place);
    }
    return places;
}

Plugin::Plugin(const QString &path)
    : loader(libraryFile(path))
{
    const QString file = loader.fileName().isEmpty() ? path : loader.fileName();
    const QString expected = QString::fromLatin1(qobject_interface_iid<PluginInterfaceImport *>());
    const QString identifier = loader.metaData().value(QLatin1String("IID")).toString();
    if (identifier.isEmpty())
        throw Failure(QStringLiteral("%1: not a plug-in, expected one of interface \"%2\": %3")
                          .arg(file, expected, reason(loader)));
    if (identifier != expected)
        throw Failure(
            QStringLiteral("%1: a plug-in of interface \"%2\", expected \"%3\"").arg(file, identifier, expected));
    QObject *object = loader.instance();
    if (!object)
        throw Failure(QStringLiteral("%1: the plug-in cannot be loaded: %2").arg(file, reason(loader)));
    root = qobject_cast<PluginInterfaceImport *>(object);
    if (!root)
        throw Failure(QStringLiteral("%1: the plug-in names the interface \"%2\" but its object does not implement it")
                          .arg(file, expected));
}

bool Plugin::isOwn() const
{
    return loader.metaData().value(QLatin1String("className")).toString() == ownClassName;
}

} // namespace Host
