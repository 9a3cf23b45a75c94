#pragma once

// What the fuzz targets share: the engine's entry, a check that ends the process, and the input as a file.

#include <QtCore/QByteArrayView>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// The engine's entry. Each target defines it; replay.cpp calls it where there is no engine.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size); // NOLINT(readability-identifier-naming)

namespace Fuzz {

inline void require(bool isKept)
{
    if (!isKept)
        std::abort();
}

inline QByteArrayView bytesOf(const uint8_t *data, size_t size)
{
    return {data, static_cast<qsizetype>(size)};
}

/// Writes @p content to the file @p name in a folder of this process, and returns its path.
inline QString write(const QString &name, QByteArrayView content)
{
    static const QTemporaryDir folder;
    QFile file(folder.filePath(name));
    require(file.open(QIODevice::WriteOnly) && file.write(content.data(), content.size()) == content.size());
    return file.fileName();
}

} // namespace Fuzz
