#pragma once

// Internal: how importers open what they are given.

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace KOV::SDK {

/// Opens @p file if it is a regular file: a pipe could block the import, and a device might never end. A path with a
/// NUL is refused first, since Qt prints a warning about it.
inline bool openRegularFile(QFile &file, QIODevice::OpenMode mode)
{
    return !file.fileName().contains(QChar(u'\0')) && QFileInfo(file).isFile() && file.open(mode);
}

} // namespace KOV::SDK
