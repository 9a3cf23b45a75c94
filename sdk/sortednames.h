#pragma once

// Internal: the order of every list of names that the model returns.

#include <QtCore/QList>
#include <QtCore/QString>

#include <algorithm>

namespace KOV::SDK {

/// The keys of @p map, ascending by UTF-16 code unit, so that no result depends on a hash map's order.
template <typename Map>
QList<QString> sortedNames(const Map &map)
{
    QList<QString> names;
    names.reserve(static_cast<qsizetype>(map.size()));
    for (const auto &entry : map)
        names.append(entry.first);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace KOV::SDK
