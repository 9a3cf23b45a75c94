// Cars from a data stream: whatever was read without an error comes out again as it was written.
// The first byte of the input picks the version of the stream, the second the type and the byte order.

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"

#include "fuzz.h"
#include "tests/promises.h"

#include <QtCore/QDataStream>

using namespace KOV::SDK;

namespace {

bool isSame(const CarInfo &a, const CarInfo &b)
{
    return Testing::membersOf(a) == Testing::membersOf(b);
}

bool isSame(const LivePluginInfo &a, const LivePluginInfo &b)
{
    const auto isSameCar = [](const auto &x, const auto &y) { return isSame(x, y); };
    return a.streamFirstName == b.streamFirstName && a.streamSecondName == b.streamSecondName &&
           std::equal(a.cars.begin(), a.cars.end(), b.cars.begin(), b.cars.end(), isSameCar);
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
    Fuzz::require(in.status() == QDataStream::Ok && in.atEnd() && isSame(value, again));
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
    if (data[1] % 4 == 0)
        readAndWrite<CarInfo>(stream);
    else if (data[1] % 4 == 1)
        Fuzz::require(readAndWrite<Sample>(stream).dynamicData.isEmpty());
    else
        Fuzz::require(static_cast<size_t>(readAndWrite<LivePluginInfo>(stream).cars.size()) <= size);
    return 0;
}
