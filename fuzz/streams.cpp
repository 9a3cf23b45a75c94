// Cars from a data stream: whatever was read without an error comes out again as it was written.
// The first byte of the input picks the version of the stream, the second the type and the byte order.

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"

#include "fuzz.h"

#include <QtCore/QDataStream>

using namespace KOV::SDK;

namespace {

void requireSame(const CarInfo &a, const CarInfo &b)
{
    Fuzz::require(a.carId == b.carId && a.sourceName == b.sourceName && a.pluginName == b.pluginName &&
                  a.carName == b.carName && a.className == b.className && a.driverName == b.driverName &&
                  a.teamName == b.teamName && a.status == b.status && a.detailedTelemetry == b.detailedTelemetry);
}

void requireSame(const LivePluginInfo &a, const LivePluginInfo &b)
{
    Fuzz::require(a.streamFirstName == b.streamFirstName && a.streamSecondName == b.streamSecondName &&
                  a.cars.size() == b.cars.size());
    for (qsizetype i = 0; i < a.cars.size(); ++i)
        requireSame(a.cars[i], b.cars[i]);
}

template <typename Type>
Type readAndWrite(QDataStream &stream)
{
    Type value;
    stream >> value;
    if (stream.status() != QDataStream::Ok)
        return value;
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << value;
    Type again;
    QDataStream in(bytes);
    in >> again;
    Fuzz::require(in.status() == QDataStream::Ok && in.atEnd());
    requireSame(value, again);
    return value;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return -1;
    QDataStream stream(Fuzz::bytesOf(data, size).sliced(2).toByteArray());
    stream.setVersion(1 + data[0] % QDataStream::Qt_DefaultCompiledVersion);
    stream.setByteOrder(data[1] & 4 ? QDataStream::LittleEndian : QDataStream::BigEndian);
    switch (data[1] % 4) {
    case 0:
        readAndWrite<CarInfo>(stream);
        break;
    case 1:
        Fuzz::require(readAndWrite<Sample>(stream).dynamicData.isEmpty());
        break;
    default:
        Fuzz::require(static_cast<size_t>(readAndWrite<LivePluginInfo>(stream).cars.size()) <= size);
    }
    return 0;
}
