#pragma once

// A file that a command writes: complete or not at all, and never over what it was not told to replace.

#include <QtCore/QByteArrayView>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Host {

class NewFile
{
public:
    /// Writes to @p path. Throws Failure where that is one of @p sources, is something else than a file, or is there
    /// already and @p isForced is false; so call it before the work is done.
    NewFile(const QString &path, const QStringList &sources, bool isForced);

    /// Writes @p content to a file beside it, which then takes its name. Throws Failure; nothing is left of it then.
    void write(QByteArrayView content) const;

private:
    QString path;
};

} // namespace Host
