// The sidecar: XML in which every item is an element with an identity, a value and perhaps a unit.

#include "sidecar.h"

#include <QtCore/QFileInfo>

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

QByteArray attribute(const char *name, const QByteArray &value)
{
    return ' ' + QByteArray(name) + "=\"" + QString::fromUtf8(value).toHtmlEscaped().toUtf8() + '"';
}

QByteArray element(const QByteArray &id, const QByteArray &value, const char *unit)
{
    QByteArray text = "    <Item" + attribute("Id", id) + attribute("Value", value);
    if (unit)
        text += attribute("Unit", unit);
    return text + "/>\n";
}

} // namespace

QString sidecarPath(const QString &logPath)
{
    const QFileInfo log(logPath);
    return log.absolutePath() + QLatin1Char('/') + log.baseName() + QLatin1String(".ldx");
}

QByteArray sidecarText(const LogInfo &info)
{
    QByteArray text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Log>\n  <Details>\n";
    text += element("Event", info.session, nullptr);
    text += element("Session", "1", nullptr);
    for (const Item &item : setupItems)
        text += element(item.id, item.value, item.unit);
    return text + "  </Details>\n</Log>\n";
}

} // namespace samples
