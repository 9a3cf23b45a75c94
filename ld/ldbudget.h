#pragma once

// Internal: how much memory a log may take. Reasons and worst case: docs/ld.md.

#include <QtCore/qglobal.h>

#include <algorithm>

namespace Ld {

/// Counts bytes: everything that is decoded and everything that the laps hold is taken from it before it is allocated.
class Budget
{
public:
    explicit Budget(qint64 fileBytes)
        : bytes(baseBytes + std::clamp(fileBytes - baseFileBytes, qint64{0}, maxFileBytes) * bytesPerByte)
    {
    }

    qint64 left() const { return bytes; }
    /// Takes @p count bytes; takes none and returns false if that is more than is left.
    bool take(qint64 count)
    {
        const bool isEnough = count <= bytes;
        bytes -= isEnough ? count : 0;
        return isEnough;
    }

private:
    static constexpr qint64 baseBytes = qint64{480} << 20;
    static constexpr qint64 baseFileBytes = 1 << 20; // beyond them the budget grows with the file
    static constexpr qint64 bytesPerByte = 768;
    static constexpr qint64 maxFileBytes = qint64{1} << 50; // sparse files can claim more

    qint64 bytes;
};

} // namespace Ld
