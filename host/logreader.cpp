#include "host/logreader.h"

#include "host/failure.h"
#include "host/ldlog.h"
#include "host/logformat.h"
#include "host/platform.h"
#include "host/remarks.h"
#include "inspect/check.h"
#include "sdk/dataemitter.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace Host {

namespace {

Log importBy(const Plugin &plugin, const QString &path)
{
    Log log{path, {}, {}, {}};
    KOV::SDK::PluginInterfaceImport *import = plugin.interface();
    const QObject listener; // ends the connection, also if the plug-in throws
    QObject::connect(import->dataEmitter(), &KOV::SDK::DataEmitter::sendMessage, &listener,
                     [&log](const QString &message, int /*verbose*/) { log.messages.append(message); });
    log.laps = import->import(path, import->availableImportFormats().value(0), {});
    log.laps.removeAll(nullptr);
    if (log.laps.isEmpty())
        throw Failure(QStringLiteral("%1: the plug-in \"%2\" found no laps in it").arg(path, import->pluginName()));
    if (std::all_of(log.laps.begin(), log.laps.end(), [](const auto &lap) { return lap->isEmpty(); }))
        throw Failure(path + QLatin1String(": no data rows; expected a header, channel names, units and rows"));
    return log;
}

} // namespace

LogFormat readFormat(const QString &path)
{
    // Looks before the import does, since the import cannot say what is wrong with a file.
    const QFileInfo info(path);
    const auto refuse = [&path](const QString &why) { throw Failure(path + QLatin1String(": ") + why); };
    if (path.isEmpty())
        throw Failure(QStringLiteral("the path of a log is empty"));
    if (!info.exists())
        refuse(info.isSymLink()         ? QStringLiteral("a dangling symbolic link")
               : isInClosedFolder(path) ? QStringLiteral("permission denied on its folder")
                                        : QStringLiteral("no such file"));
    if (info.isDir())
        refuse(QStringLiteral("a folder, expected a log file"));
    if (!info.isFile())
        refuse(QStringLiteral("not a regular file but a device, a pipe or a socket"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        refuse(QLatin1String("cannot be opened: ") + file.errorString());
    const QByteArray head = file.read(logFormatBytes);
    if (head.isEmpty() && file.error() != QFileDevice::NoError)
        refuse(QLatin1String("cannot be read: ") + file.errorString());
    if (head.isEmpty())
        refuse(QStringLiteral("the file is empty"));
    return logFormatOf(head, info.size());
}

Failure notALog(const QString &path)
{
    return Failure(path + QLatin1String(": neither a text export nor a binary .ld log") + checkHint(path));
}

LogReader::LogReader(const QString &pluginPath)
    : plugin(pluginPath)
{
}

Log LogReader::read(const QString &path) const
{
    const LogFormat format = readFormat(path);
    if (!plugin.isOwn())
        return importBy(plugin, path);
    if (format == LogFormat::Unknown)
        throw notALog(path);
    try {
        Log log = format == LogFormat::Text ? importBy(plugin, path) : loadLdLog(path);
        const QString remark =
            format == LogFormat::Text ? Inspect::remarkOnText(path, log.laps) : Inspect::remarkOnBinary(path, log.laps);
        if (!remark.isEmpty())
            log.remarks.append(path + QLatin1String(": ") + remark + checkHint(path));
        return log;
    } catch (const Failure &failure) {
        throw NoLaps(failure.text() + checkHint(path));
    }
}

} // namespace Host
