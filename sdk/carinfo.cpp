#include "sdk/carinfo.h"

#include "sdk/variantmap.h"
#include "sdk/wholenumber.h"

#include <QtCore/QDataStream>
#include <QtCore/QMap>
#include <QtCore/QVariant>

namespace KOV::SDK {

namespace {

struct TextEntry
{
    QLatin1String key;
    QString CarInfo::*member;
};

// The keys on a stream: the seven texts, and two more.
constexpr TextEntry textEntries[]{
    {QLatin1String("carId"), &CarInfo::carId},           {QLatin1String("carName"), &CarInfo::carName},
    {QLatin1String("className"), &CarInfo::className},   {QLatin1String("driverName"), &CarInfo::driverName},
    {QLatin1String("pluginName"), &CarInfo::pluginName}, {QLatin1String("sourceName"), &CarInfo::sourceName},
    {QLatin1String("teamName"), &CarInfo::teamName}};
constexpr QLatin1String detailedTelemetryKey("detailedTelemetry");
constexpr QLatin1String statusKey("status");

} // namespace

QDataStream &operator<<(QDataStream &stream, const CarInfo &car)
{
    QMap<QString, QVariant> values{{detailedTelemetryKey, car.detailedTelemetry},
                                   {statusKey, static_cast<int>(car.status)}};
    for (const auto &[key, member] : textEntries)
        values.insert(key, car.*member);
    return stream << values;
}

QDataStream &operator>>(QDataStream &stream, CarInfo &car)
{
    const QMap<QString, QVariant> values = readVariantMap(stream);
    for (const auto &[key, member] : textEntries)
        car.*member = values.value(key).toString();
    car.detailedTelemetry = values.value(detailedTelemetryKey).toBool();
    car.status = static_cast<CarStatus>(wholeNumber(values.value(statusKey)));
    return stream;
}

} // namespace KOV::SDK
