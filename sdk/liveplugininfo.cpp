#include "sdk/liveplugininfo.h"

#include <QtCore/QDataStream>

namespace KOV::SDK {

QDataStream &operator<<(QDataStream &stream, const LivePluginInfo &info)
{
    stream << info.streamFirstName << info.streamSecondName << static_cast<qint32>(info.cars.size());
    for (const CarInfo &car : info.cars)
        stream << car;
    return stream;
}

QDataStream &operator>>(QDataStream &stream, LivePluginInfo &info)
{
    stream >> info.streamFirstName >> info.streamSecondName;
    info.cars.clear();
    qint32 count = 0;
    stream >> count;
    CarInfo car;
    for (qint32 i = 0; i < count; ++i) {
        stream >> car;
        if (stream.status() != QDataStream::Ok)
            break;
        info.cars.append(car);
    }
    return stream;
}

} // namespace KOV::SDK
