// The stream forms of cars: held against what Qt itself makes of the map that they are, and against damage.

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"

#include <QtCore/QDataStream>
#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>
#include <QtCore/QMap>
#include <QtCore/QPoint>
#include <QtCore/QUuid>
#include <QtCore/QVariant>
#include <QtTest/QTest>

#include <limits>
#include <tuple>

using namespace KOV::SDK;
using namespace Qt::StringLiterals;

namespace {

using Map = QMap<QString, QVariant>;

auto members(const CarInfo &car)
{
    return std::make_tuple(car.carId, car.sourceName, car.pluginName, car.carName, car.className, car.driverName,
                           car.teamName, car.status, car.detailedTelemetry);
}

CarInfo filledCar(const QString &prefix)
{
    CarInfo car;
    car.carId = prefix + u"id"_s;
    car.sourceName = prefix + u"source"_s;
    car.pluginName = prefix + u"plugin"_s;
    car.carName = prefix + u"car"_s;
    car.className = prefix + u"class"_s;
    car.driverName = prefix + u"driver \u00e9"_s;
    car.teamName = prefix + u"team"_s;
    car.status = CarStatus::OffTrack;
    return car;
}

/// The map that @p car is on a stream.
Map mapOf(const CarInfo &car)
{
    return {{u"teamName"_s, car.teamName},
            {u"status"_s, static_cast<int>(car.status)},
            {u"sourceName"_s, car.sourceName},
            {u"pluginName"_s, car.pluginName},
            {u"driverName"_s, car.driverName},
            {u"detailedTelemetry"_s, car.detailedTelemetry},
            {u"className"_s, car.className},
            {u"carName"_s, car.carName},
            {u"carId"_s, car.carId}};
}

/// The car that @p map means by QVariant's own conversions.
CarInfo carOf(const Map &map)
{
    CarInfo car;
    car.carId = map[u"carId"_s].toString();
    car.sourceName = map[u"sourceName"_s].toString();
    car.pluginName = map[u"pluginName"_s].toString();
    car.carName = map[u"carName"_s].toString();
    car.className = map[u"className"_s].toString();
    car.driverName = map[u"driverName"_s].toString();
    car.teamName = map[u"teamName"_s].toString();
    car.status = static_cast<CarStatus>(map[u"status"_s].toInt());
    car.detailedTelemetry = map[u"detailedTelemetry"_s].toBool();
    return car;
}

template <typename... Items>
QByteArray streamed(const Items &...items)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    (stream << ... << items);
    return bytes;
}

template <typename T>
QDataStream::Status readInto(T &target, const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream >> target;
    return stream.status();
}

const CarInfo unreadCar = carOf({}); // NOLINT(cert-err58-cpp)
constexpr quint32 huge = 0xfffffff0U;

} // namespace

class TestStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyVersion_data();
    void everyVersion();
    void maps_data();
    void maps();
    void laterOfTwoKeys();
    void sampleIsItsCar();
    void lists_data();
    void lists();
    void cutAtEveryByte();
    void damaged_data();
    void damaged();
    void formerErrorStays();
};

void TestStreams::everyVersion_data()
{
    QTest::addColumn<int>("version");
    for (int version = QDataStream::Qt_3_3; version <= QDataStream::Qt_DefaultCompiledVersion; ++version)
        QTest::addRow("version %d", version) << version;
}

void TestStreams::everyVersion()
{
    QFETCH(int, version);
    for (const auto order : {QDataStream::BigEndian, QDataStream::LittleEndian}) {
        for (const CarInfo &car : {CarInfo(), filledCar(u"a "_s)}) {
            QByteArray bytes;
            QByteArray expected;
            QDataStream writer(&bytes, QIODevice::WriteOnly);
            QDataStream reference(&expected, QIODevice::WriteOnly);
            QDataStream reader(&bytes, QIODevice::ReadOnly);
            for (QDataStream *stream : {&writer, &reference, &reader}) {
                stream->setVersion(version);
                stream->setByteOrder(order);
            }
            writer << car;
            reference << mapOf(car);
            QCOMPARE(bytes, expected);

            CarInfo read = filledCar(u"former "_s);
            reader >> read;
            QCOMPARE(reader.status(), QDataStream::Ok);
            QVERIFY(reader.atEnd());
            QVERIFY(members(read) == members(car));
        }
    }
}

void TestStreams::maps_data()
{
    QTest::addColumn<Map>("map");
    const Map whole = mapOf(filledCar(u"b "_s));
    const auto with = [&whole](const QString &key, const QVariant &value) {
        Map map = whole;
        map.insert(key, value);
        return map;
    };
    Map withoutStatus = whole;
    withoutStatus.remove(u"status"_s);

    QTest::newRow("no entries") << Map();
    QTest::newRow("no status") << withoutStatus;
    QTest::newRow("keys in other case") << Map{{u"CarId"_s, u"x"_s}, {u"STATUS"_s, 3}};
    QTest::newRow("status undefined") << with(u"status"_s, -1);
    QTest::newRow("status out of table") << with(u"status"_s, 4711);
    QTest::newRow("status as text") << with(u"status"_s, u"6"_s);
    QTest::newRow("status as double") << with(u"status"_s, 4.6);
    QTest::newRow("status as 64 bits") << with(u"status"_s, 7LL);
    QTest::newRow("flag as text") << with(u"detailedTelemetry"_s, u"true"_s);
    QTest::newRow("flag as text false") << with(u"detailedTelemetry"_s, u"false"_s);
    QTest::newRow("flag as number") << with(u"detailedTelemetry"_s, 2U);
    QTest::newRow("text as bytes") << with(u"carId"_s, QByteArray("bytes"));
    QTest::newRow("text as number") << with(u"carId"_s, 1.5);
    QTest::newRow("text as time") << with(u"carId"_s, QDateTime(QDate(2020, 2, 29), QTime(1, 2, 3), Qt::UTC));
    QTest::newRow("text as invalid variant") << with(u"carId"_s, QVariant());
    QTest::newRow("text as list of one") << with(u"carId"_s, QStringList{u"one"_s});
    QTest::newRow("text as list of two") << with(u"carId"_s, QStringList{u"one"_s, u"two"_s});
    QTest::newRow("text as variants") << with(u"carId"_s, QVariantList{u"one"_s});
    QTest::newRow("further shapes") << with(u"further"_s, QPointF(1, 2));
    QTest::newRow("further identity") << with(u"aFurther"_s, QUuid::createUuid());
    QTest::newRow("further nested") << with(
        u"e"_s, QVariantList{1, QVariantMap{{u"carId"_s, QVariantHash{{u"x"_s, QVariant()}}}}, QVariantList(), u'c'});
}

void TestStreams::maps()
{
    QFETCH(Map, map);
    CarInfo car = filledCar(u"former "_s);
    QDataStream stream(streamed(map, 4711));
    int next = 0;
    stream >> car >> next;
    QCOMPARE(stream.status(), QDataStream::Ok);
    QCOMPARE(next, 4711);
    QVERIFY(members(car) == members(carOf(map)));
    QCOMPARE(car.teamName.isNull(), carOf(map).teamName.isNull());
}

void TestStreams::laterOfTwoKeys()
{
    CarInfo car;
    const QString key = u"carId"_s;
    QCOMPARE(readInto(car, streamed(2U, key, QVariant(u"first"_s), key, QVariant(u"later"_s))), QDataStream::Ok);
    QCOMPARE(car.carId, u"later"_s);
}

void TestStreams::sampleIsItsCar()
{
    const CarInfo car = filledCar(u"c "_s);
    Sample sample;
    static_cast<CarInfo &>(sample) = car;
    sample.dynamicData.setValue(u"speed"_s, 1.0, u"m/s"_s);
    QCOMPARE(streamed(sample), streamed(car));

    static_cast<CarInfo &>(sample) = CarInfo();
    QCOMPARE(readInto(sample, streamed(car)), QDataStream::Ok);
    QVERIFY(members(sample) == members(car));
    QCOMPARE(sample.dynamicData.value(u"speed"_s), Value(1.0, u"m/s"_s));
}

void TestStreams::lists_data()
{
    QTest::addColumn<int>("claimed");
    QTest::addColumn<int>("present");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("sound");
    QTest::newRow("none") << 0 << 0 << 0 << true;
    QTest::newRow("three") << 3 << 3 << 3 << true;
    QTest::newRow("fewer than present") << 1 << 3 << 1 << true;
    QTest::newRow("negative") << -1 << 3 << 0 << true;
    QTest::newRow("most negative") << std::numeric_limits<int>::min() << 3 << 0 << true;
    QTest::newRow("one too many") << 4 << 3 << 3 << false;
    QTest::newRow("two thousand million") << std::numeric_limits<int>::max() << 3 << 3 << false;
}

void TestStreams::lists()
{
    QFETCH(int, claimed);
    QFETCH(int, present);
    QFETCH(int, expected);
    QFETCH(bool, sound);
    LivePluginInfo written;
    QByteArray bytes = streamed(u"first"_s, u"second"_s, claimed);
    for (int i = 0; i < present; ++i) {
        written.cars.append(filledCar(QString::number(i)));
        bytes += streamed(mapOf(written.cars.back()));
    }
    LivePluginInfo read;
    read.cars.resize(7);
    QCOMPARE(readInto(read, bytes) == QDataStream::Ok, sound);
    QCOMPARE(read.streamFirstName, u"first"_s);
    QCOMPARE(read.streamSecondName, u"second"_s);
    QCOMPARE(read.cars.size(), expected);
    for (int i = 0; i < expected; ++i)
        QVERIFY(members(read.cars[i]) == members(written.cars[i]));
    if (claimed == present) {
        written.streamFirstName = read.streamFirstName;
        written.streamSecondName = read.streamSecondName;
        QCOMPARE(streamed(written), bytes);
    }
}

void TestStreams::cutAtEveryByte()
{
    LivePluginInfo info;
    info.streamFirstName = u"first"_s;
    info.cars = {filledCar(u"a "_s), filledCar(u"b "_s)};
    const QByteArray car = streamed(info.cars[0]);
    for (qsizetype length = 0; length < car.size(); ++length) {
        CarInfo read = filledCar(u"former "_s);
        QCOMPARE(readInto(read, car.first(length)), QDataStream::ReadPastEnd);
        QVERIFY(members(read) == members(unreadCar));
    }
    const QByteArray list = streamed(info);
    for (qsizetype length = 0; length < list.size(); ++length) {
        LivePluginInfo read = info;
        QCOMPARE(readInto(read, list.first(length)), QDataStream::ReadPastEnd);
        QCOMPARE(read.cars.size(), list.size() - length > car.size() ? 0 : 1);
    }
}

void TestStreams::damaged_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("status");
    const auto head = [](int type) { return streamed(static_cast<quint32>(type), qint8(0)); };
    const QByteArray listOfOne = head(QMetaType::QVariantList) + streamed(1U);

    QTest::newRow("endless text") << head(QMetaType::QString) + streamed(huge) << int(QDataStream::ReadPastEnd);
    QTest::newRow("half a character") << head(QMetaType::QString) + streamed(1U, 'x', 'y')
                                      << int(QDataStream::ReadCorruptData);
    QTest::newRow("endless bytes") << head(QMetaType::QByteArray) + streamed(huge) << int(QDataStream::ReadPastEnd);
    for (const int type :
         {QMetaType::QStringList, QMetaType::QVariantList, QMetaType::QVariantMap, QMetaType::QVariantHash})
        QTest::addRow("endless %s", QMetaType(type).name())
            << head(type) + streamed(huge) << int(QDataStream::ReadPastEnd);
    for (const int type : {int(QMetaType::QByteArrayList), int(QMetaType::QEasingCurve), int(QMetaType::QVariant),
                           int(QMetaType::QObjectStar), int(QMetaType::QColor), 0x7fffffff, -1})
        QTest::addRow("type %d", type) << head(type) + streamed(huge, huge, huge) << int(QDataStream::ReadCorruptData);
    QTest::newRow("named type") << head(QMetaType::User) + streamed(QByteArray("QList<int>"), huge)
                                << int(QDataStream::ReadCorruptData);
    QTest::newRow("deepest list") << listOfOne.repeated(32) + head(QMetaType::Bool) << int(QDataStream::ReadPastEnd);
    QTest::newRow("list too deep") << listOfOne.repeated(1'000'000) << int(QDataStream::ReadCorruptData);
}

void TestStreams::damaged()
{
    QFETCH(QByteArray, value);
    QFETCH(int, status);
    QElapsedTimer timer;
    timer.start();
    // The entry before it is sound, and lost with the rest of its map; so are the cars behind.
    const QByteArray map = streamed(huge, u"carId"_s, QVariant(u"sound"_s), u"further"_s) + value;
    CarInfo car = filledCar(u"former "_s);
    QCOMPARE(int(readInto(car, map)), status);
    QVERIFY(members(car) == members(unreadCar));

    LivePluginInfo info;
    QCOMPARE(int(readInto(info, streamed(QString(), QString(), std::numeric_limits<int>::max(), CarInfo()) + map)),
             status);
    QCOMPARE(info.cars.size(), 1);
    QVERIFY(timer.elapsed() < 5000);
}

void TestStreams::formerErrorStays()
{
    CarInfo car;
    QDataStream stream(streamed(filledCar(u"d "_s)));
    stream.setStatus(QDataStream::ReadCorruptData);
    stream >> car;
    QVERIFY(members(car) == members(filledCar(u"d "_s)));
    QCOMPARE(stream.status(), QDataStream::ReadCorruptData);
}

QTEST_GUILESS_MAIN(TestStreams)
#include "tst_streams.moc"
