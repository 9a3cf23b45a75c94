#pragma once

// Internal: QVariant::toInt for variants that come out of files and streams.

#include <QtCore/QVariant>

#include <cmath>

namespace KOV::SDK {

/// What @p value's toInt() gives, but 0 for a number that is beyond 64 bits or NaN: QVariant's own rounding is
/// undefined there.
inline int wholeNumber(const QVariant &value)
{
    constexpr double bound = 0x1p63;
    const int type = value.metaType().id();
    const bool isFloating = type == QMetaType::Double || type == QMetaType::Float;
    return isFloating && !(std::abs(value.toDouble()) < bound) ? 0 : value.toInt();
}

} // namespace KOV::SDK
