#pragma once

// Named values whose set of names is not known in advance: the columns of a data row, the setup values of a lap.

#include "orva_export.h"
#include "sdk/namemap.h"
#include "sdk/value.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace KOV::SDK {

class DynamicDataRange;

/// A map from name to Value. Names are unique and compared exactly; the order of iteration has no meaning.
/// Copies are deep, though strings and variants share their storage. Not synchronised.
class ORVA_EXPORT DynamicData
{
public:
    /// A copy of the entry, or an invalid Value with a null unit if there is no such entry.
    Value value(const QString &name) const;
    /// Whether there is such an entry, even with an invalid value.
    bool containsValue(const QString &name) const;
    /// Inserts the entry or replaces its value, unit included.
    void setValue(QString name, Value value);
    void setValue(QString name, QVariant value, QString unit);
    void removeValue(const QString &name);
    void clear();
    bool isEmpty() const { return entries.empty(); }
    qint64 size() const { return static_cast<qint64>(entries.size()); }
    /// All names, ascending by UTF-16 code unit (so "Z" before "a").
    QList<QString> valueNameList() const;
    /// All entries as pairs of name and Value, for a range-based loop; valid until the map is changed.
    DynamicDataRange asRange() const;

private:
    friend class DynamicDataRange;
    NameMap<Value> entries;
};

/// A view of a DynamicData's entries. It owns nothing.
class DynamicDataRange
{
public:
    using const_iterator = NameMap<Value>::const_iterator; // NOLINT(readability-identifier-naming)

    DynamicDataRange(const_iterator begin, const_iterator end)
        : first(begin)
        , last(end)
    {
    }

    const_iterator begin() const { return first; }
    const_iterator end() const { return last; }

private:
    const_iterator first;
    const_iterator last;
};

} // namespace KOV::SDK
