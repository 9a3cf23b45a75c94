#pragma once

// A named quantity's value: a variant with a unit. Maps of them by name: dynamicdata.h.

#include "orva_export.h"

#include <QtCore/QString>
#include <QtCore/QVariant>

namespace KOV::SDK {

/// A QVariant with a unit text. A default-built one is invalid and has a null unit, which means "no such value".
class ORVA_EXPORT Value : public QVariant
{
public:
    Value() = default;
    Value(const QVariant &value, QString unit);

    const QString &unit() const { return unitText; }
    void setUnit(QString unit);

    /// Equal units (null equals empty) and then equal variants by QVariant's rules. Values in different units are never
    /// equal: nothing is converted.
    bool operator==(const Value &other) const;
    bool operator!=(const Value &other) const { return !(*this == other); }

private:
    QString unitText;
};

} // namespace KOV::SDK
