#include "sidecar.h"

namespace samples {

namespace {

struct Item
{
    const char *id;
    const char *value;
    const char *unit; // null where the value is a text
};

constexpr Item setupItems[] = {
    {"CarSetup_TyreCompound", "Medium", nullptr},
    {"CarSetup_TyrePressureFL", "1.45", "bar"},
    {"CarSetup_TyrePressureFR", "1.45", "bar"},
    {"CarSetup_TyrePressureRL", "1.40", "bar"},
    {"CarSetup_TyrePressureRR", "1.40", "bar"},
    {"CarSetup_RideHeightFront", "42", "mm"},
    {"CarSetup_RideHeightRear", "47.5", "mm"},
    {"CarSetup_CamberFront", "-2.8", "deg"},
    {"CarSetup_CamberRear", "-1.9", "deg"},
    {"CarSetup_BrakeBias", "56.5", "%"},
    {"CarSetup_FuelLoad", "38", "l"},
    {"CarSetup_RearWing", "P4", nullptr},
    {"CarSetup_FinalDrive", "4.10", nullptr},
    {"AirTemperature", "18.5", "C"},
    {"Weather", "Dry, light wind", nullptr},
};

} // namespace

QList<Inspect::SidecarItem> sidecarItems(const LogInfo &info)
{
    QList<Inspect::SidecarItem> items;
    const auto add = [&items](const char *id, const QByteArray &value, const char *unit) {
        Inspect::SidecarItem item;
        item.id = QString::fromLatin1(id);
        item.value = QString::fromUtf8(value);
        if (unit)
            item.unit = QString::fromLatin1(unit);
        items.append(item);
    };
    add("Event", info.session, nullptr);
    add("Session", "1", nullptr);
    for (const Item &item : setupItems)
        add(item.id, item.value, item.unit);
    return items;
}

} // namespace samples
