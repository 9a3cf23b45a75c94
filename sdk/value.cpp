#include "sdk/value.h"

#include <utility>

namespace KOV::SDK {

Value::Value(const QVariant &value, QString unit)
    : QVariant(value)
    , unitText(std::move(unit))
{
}

void Value::setUnit(QString unit)
{
    unitText = std::move(unit);
}

bool Value::operator==(const Value &other) const
{
    return unitText == other.unitText && static_cast<const QVariant &>(*this) == static_cast<const QVariant &>(other);
}

} // namespace KOV::SDK
