#include "host/newfile.h"

#include "host/failure.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

#include <filesystem>
#include <system_error>

namespace Host {

NewFile::NewFile(const QString &path, const QStringList &sources, bool isForced)
    : path(path)
{
    const QFileInfo info(path);
    for (const QString &source : sources) {
        std::error_code error;
        if (std::filesystem::equivalent(info.filesystemAbsoluteFilePath(),
                                        QFileInfo(source).filesystemAbsoluteFilePath(), error))
            throw Failure(path + QLatin1String(": a log or its sidecar, which are never overwritten"));
    }
    if (info.isDir())
        throw Failure(path + QLatin1String(": a folder, expected the name of a file to write"));
    if (info.exists() && !info.isFile())
        throw Failure(path + QLatin1String(": not a regular file, expected the name of a file to write"));
    if (info.exists() && !isForced)
        throw Failure(path + QLatin1String(": already there; --force overwrites it"));
}

void NewFile::write(QByteArrayView content) const
{
    QSaveFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(content.data(), content.size()) >= 0;
    if (!isWritten || !file.commit())
        throw Failure(QStringLiteral("%1: cannot be written (%2)").arg(path, file.errorString()));
}

} // namespace Host
