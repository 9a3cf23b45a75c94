#include "sdk/dynamicdata.h"

#include "sdk/sortednames.h"

#include <utility>

namespace KOV::SDK {

Value DynamicData::value(const QString &name) const
{
    const auto entry = entries.find(name);
    return entry != entries.end() ? entry->second : Value();
}

bool DynamicData::containsValue(const QString &name) const
{
    return entries.contains(name);
}

void DynamicData::setValue(QString name, Value value)
{
    entries.insert_or_assign(std::move(name), std::move(value));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts and plug-ins are built against this signature
void DynamicData::setValue(QString name, QVariant value, QString unit)
{
    setValue(std::move(name), Value(value, std::move(unit)));
}

void DynamicData::removeValue(const QString &name)
{
    entries.erase(name);
}

void DynamicData::clear()
{
    entries.clear();
}

QList<QString> DynamicData::valueNameList() const
{
    return sortedNames(entries);
}

DynamicDataRange DynamicData::asRange() const
{
    return {entries.begin(), entries.end()};
}

} // namespace KOV::SDK
