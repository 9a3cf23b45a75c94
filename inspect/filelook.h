#pragma once

// What a file that is not a log looks like. Said to people who picked the wrong file, or a log in a wrapping.

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

namespace Inspect {

struct FileLook
{
    QString what;   ///< such as "a spreadsheet (.xlsx)"; empty where nothing is recognised
    QString remedy; ///< what to do with it
};

/// How much of a file's beginning lookOf wants to see.
inline constexpr qsizetype fileLookBytes = 4096;

/// Tells by its first bytes what a file is that the import cannot read. Nothing for a text export or a .ld log.
FileLook lookOf(QByteArrayView head);

} // namespace Inspect
