#pragma once

// The hash map from names that laps and DynamicData are made of.

#include <QtCore/QHash>
#include <QtCore/QString>

#include <cstddef>
#include <unordered_map>

namespace KOV::SDK {

/// Names come out of files: with the process's own random seed, no file can choose names that all collide. A map
/// keeps the seed that it began with, as the process may be given another one.
struct NameHash
{
    // Not noexcept, since libstdc++ then keeps each name's hash beside it: growing and copying a map need not hash
    // again.
    std::size_t operator()(const QString &name) const { return qHash(name, seed); }

    std::size_t seed = QHashSeed::globalSeed();
};

template <typename T>
using NameMap = std::unordered_map<QString, T, NameHash>;

} // namespace KOV::SDK
