// The stream forms of cars: held against what Qt itself makes of the map that they are, and against damage.

#include "testing.h"

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"

#include <QtCore/QDataStream>
#include <QtCore/QDateTime>
#include <QtCore/QMap>
#include <QtCore/QPoint>
#include <QtCore/QRegularExpression>
#include <QtCore/QUuid>
#include <QtCore/QVariant>

#include <sys/stat.h>

#include <limits>

using namespace KOV::SDK;
using namespace Testing;

namespace {

using Map = QMap<QString, QVariant>;
using Status = QDataStream::Status;

constexpr std::pair<QLatin1String, QString CarInfo::*> texts[]{
    {"carId"_L1, &CarInfo::carId},           {"sourceName"_L1, &CarInfo::sourceName},
    {"pluginName"_L1, &CarInfo::pluginName}, {"carName"_L1, &CarInfo::carName},
    {"className"_L1, &CarInfo::className},   {"driverName"_L1, &CarInfo::driverName},
    {"teamName"_L1, &CarInfo::teamName}};

CarInfo filledCar(const QString &prefix)
{
    CarInfo car;
    for (const auto &[key, member] : texts)
        car.*member = prefix + key + u" \u00e9"_s;
    car.status = CarStatus::OffTrack;
    return car;
}

/// The map that @p car is on a stream.
Map mapOf(const CarInfo &car)
{
    Map map{{u"status"_s, static_cast<int>(car.status)}, {u"detailedTelemetry"_s, car.detailedTelemetry}};
    for (const auto &[key, member] : texts)
        map.insert(key, car.*member);
    return map;
}

/// The car that @p map means by QVariant's own conversions.
CarInfo carOf(const Map &map)
{
    CarInfo car;
    for (const auto &[key, member] : texts)
        car.*member = map[key].toString();
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
Status readInto(T &target, const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream >> target;
    return stream.status();
}

bool same(const CarInfo &a, const CarInfo &b)
{
    return membersOf(a) == membersOf(b);
}

constexpr quint32 huge = 0xfffffff0U;

} // namespace

class TestStreams : public QObject
{
    Q_OBJECT

    Files files;

private Q_SLOTS:
    void everyVersion_data()
    {
        const Table<int> row("version");
        for (int version = QDataStream::Qt_3_3; version <= QDataStream::Qt_DefaultCompiledVersion; ++version)
            row(QByteArray::number(version), version);
    }
    void everyVersion()
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
                QVERIFY(same(read, car));
            }
        }
    }

    void maps_data()
    {
        const Table<Map> row("map");
        const Map whole = mapOf(filledCar(u"b "_s));
        const auto with = [&whole](const QString &key, const QVariant &value) {
            Map map = whole;
            map.insert(key, value);
            return map;
        };
        Map withoutStatus = whole;
        withoutStatus.remove(u"status"_s);

        row("no entries", {});
        row("no status", withoutStatus);
        row("keys in other case", {{u"CarId"_s, u"x"_s}, {u"STATUS"_s, 3}});
        row("status undefined", with(u"status"_s, -1));
        row("status out of table", with(u"status"_s, 4711));
        row("status as text", with(u"status"_s, u"6"_s));
        row("status as double", with(u"status"_s, 4.6));
        row("status as 64 bits", with(u"status"_s, 7LL));
        row("flag as text", with(u"detailedTelemetry"_s, u"true"_s));
        row("flag as text false", with(u"detailedTelemetry"_s, u"false"_s));
        row("flag as number", with(u"detailedTelemetry"_s, 2U));
        row("text as bytes", with(u"carId"_s, "bytes"_ba));
        row("text as number", with(u"carId"_s, 1.5));
        row("text as time", with(u"carId"_s, QDateTime(QDate(2020, 2, 29), QTime(1, 2, 3)).toUTC()));
        row("text as local time", with(u"carId"_s, QDateTime(QDate(2020, 2, 29), QTime(1, 2, 3))));
        row("text as time with offset",
            with(u"carId"_s, QDateTime(QDate(2020, 2, 29), QTime(1, 2, 3)).toOffsetFromUtc(3600)));
        row("status beyond an int", with(u"status"_s, 3e9));
        row("text as invalid variant", with(u"carId"_s, QVariant()));
        row("text as list of one", with(u"carId"_s, QStringList{u"one"_s}));
        row("text as list of two", with(u"carId"_s, QStringList{u"one"_s, u"two"_s}));
        row("text as bytes of one", with(u"carId"_s, QVariant::fromValue(QByteArrayList{"one"})));
        row("text as variants", with(u"carId"_s, QVariantList{u"one"_s}));
        row("further shapes", with(u"further"_s, QPointF(1, 2)));
        row("further character", with(u"further"_s, QVariant::fromValue(u'x')));
        row("further nothing", with(u"further"_s, QVariant::fromValue(nullptr)));
        row("further pattern", with(u"further"_s, QRegularExpression(u"x*"_s)));
        row("further identity", with(u"aFurther"_s, QUuid::createUuid()));
        row("further nested",
            with(u"e"_s,
                 QVariantList{1, QVariantMap{{u"carId"_s, QVariantHash{{u"x"_s, QVariant()}}}}, QVariantList(), u'c'}));
    }
    void maps()
    {
        QFETCH(Map, map);
        CarInfo car = filledCar(u"former "_s);
        QDataStream stream(streamed(map, 4711));
        int next = 0;
        stream >> car >> next;
        QCOMPARE(stream.status(), QDataStream::Ok);
        QCOMPARE(next, 4711);
        QVERIFY(same(car, carOf(map)));
        QCOMPARE(car.teamName.isNull(), carOf(map).teamName.isNull());
    }

    void laterOfTwoKeys()
    {
        CarInfo car;
        const QString key = u"carId"_s;
        QCOMPARE(readInto(car, streamed(2U, key, QVariant(u"first"_s), key, QVariant(u"later"_s))), QDataStream::Ok);
        QCOMPARE(car.carId, u"later"_s);
    }

    void sampleIsItsCar()
    {
        const CarInfo car = filledCar(u"c "_s);
        Sample sample;
        static_cast<CarInfo &>(sample) = car;
        sample.dynamicData.setValue(u"speed"_s, 1.0, u"m/s"_s);
        QCOMPARE(streamed(sample), streamed(car));

        static_cast<CarInfo &>(sample) = CarInfo();
        QCOMPARE(readInto(sample, streamed(car)), QDataStream::Ok);
        QVERIFY(same(sample, car));
        QCOMPARE(sample.dynamicData.value(u"speed"_s), Value(1.0, u"m/s"_s));
    }

    void lists_data()
    {
        const Table<int, int, int, bool> row("claimed", "present", "expected", "isSound");
        row("none", 0, 0, 0, true);
        row("three", 3, 3, 3, true);
        row("fewer than present", 1, 3, 1, true);
        row("negative", -1, 3, 0, true);
        row("most negative", std::numeric_limits<int>::min(), 3, 0, true);
        row("one too many", 4, 3, 3, false);
        row("two thousand million", std::numeric_limits<int>::max(), 3, 3, false);
    }
    void lists()
    {
        QFETCH(int, claimed);
        QFETCH(int, present);
        QFETCH(int, expected);
        QFETCH(bool, isSound);
        LivePluginInfo written;
        QByteArray bytes = streamed(u"first"_s, u"second"_s, claimed);
        for (int i = 0; i < present; ++i) {
            written.cars.append(filledCar(QString::number(i)));
            bytes += streamed(mapOf(written.cars.back()));
        }
        LivePluginInfo read;
        read.cars.resize(7);
        QCOMPARE(readInto(read, bytes) == QDataStream::Ok, isSound);
        QCOMPARE(read.streamFirstName, u"first"_s);
        QCOMPARE(read.streamSecondName, u"second"_s);
        QCOMPARE(read.cars.size(), expected);
        for (int i = 0; i < expected; ++i)
            QVERIFY(same(read.cars[i], written.cars[i]));
        if (claimed == present) {
            written.streamFirstName = read.streamFirstName;
            written.streamSecondName = read.streamSecondName;
            QCOMPARE(streamed(written), bytes);
        }
    }

    void cutAtEveryByte()
    {
        LivePluginInfo info;
        info.streamFirstName = u"first"_s;
        info.cars = {filledCar(u"a "_s), filledCar(u"b "_s)};
        const QByteArray car = streamed(info.cars[0]);
        for (qsizetype length = 0; length < car.size(); ++length) {
            CarInfo read = filledCar(u"former "_s);
            QCOMPARE(readInto(read, car.first(length)), QDataStream::ReadPastEnd);
            QVERIFY(same(read, carOf({})));
        }
        const QByteArray list = streamed(info);
        for (qsizetype length = 0; length < list.size(); ++length) {
            LivePluginInfo read = info;
            QCOMPARE(readInto(read, list.first(length)), QDataStream::ReadPastEnd);
            QCOMPARE(read.cars.size(), list.size() - length > car.size() ? 0 : 1);
        }
    }

    void damaged_data()
    {
        const Table<QByteArray, Status> row("value", "status");
        const auto head = [](int type) { return streamed(static_cast<quint32>(type), qint8(0)); };
        const QByteArray listOfOne = head(QMetaType::QVariantList) + streamed(1U);

        row("half a character", head(QMetaType::QString) + streamed(1U, 'x', 'y'), QDataStream::ReadCorruptData);
        for (const int type :
             {QMetaType::QString, QMetaType::QByteArray, QMetaType::QStringList, QMetaType::QByteArrayList,
              QMetaType::QVariantList, QMetaType::QVariantMap, QMetaType::QVariantHash})
            row("endless "_ba + QMetaType(type).name(), head(type) + streamed(huge), QDataStream::ReadPastEnd);
        for (const int type : {int(QMetaType::QBitArray), int(QMetaType::QEasingCurve), int(QMetaType::QVariant),
                               int(QMetaType::QObjectStar), int(QMetaType::QColor), 0x7fffffff, -1})
            row("type " + QByteArray::number(type), head(type) + streamed(huge, huge, huge),
                QDataStream::ReadCorruptData);
        // Qt would take the zone's name for a file's, and wait for what comes through the pipe.
        const QString pipe = files.path(u"pipe"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        row("time in the zone of a pipe",
            head(QMetaType::QDateTime) + streamed(QDate(2020, 2, 29), QTime(1, 2, 3), qint8(Qt::TimeZone)) +
                streamed(u"../../../../../../../.."_s + pipe),
            QDataStream::ReadCorruptData);
        row("named type", head(QMetaType::User) + streamed("QList<int>"_ba, huge), QDataStream::ReadCorruptData);
        row("deepest list", listOfOne.repeated(32) + head(QMetaType::Bool), QDataStream::ReadPastEnd);
        row("list too deep", listOfOne.repeated(1'000'000), QDataStream::ReadCorruptData);
    }
    void damaged()
    {
        QFETCH(QByteArray, value);
        QFETCH(Status, status);
        // The entry before it is sound, and lost with the rest of its map; so are the cars behind.
        const QByteArray map = streamed(huge, u"carId"_s, QVariant(u"sound"_s), u"further"_s) + value;
        CarInfo car = filledCar(u"former "_s);
        QCOMPARE(readInto(car, map), status);
        QVERIFY(same(car, carOf({})));

        LivePluginInfo info;
        QCOMPARE(readInto(info, streamed(QString(), QString(), std::numeric_limits<int>::max(), CarInfo()) + map),
                 status);
        QCOMPARE(info.cars.size(), 1);
    }

    void emptyCarsAreCheap()
    {
        constexpr qsizetype carCount = 1 << 18;
        const QByteArray bytes =
            streamed(QString(), QString(), std::numeric_limits<int>::max()) + QByteArray(4 * carCount, '\0');
        LivePluginInfo info;
        QCOMPARE(readInto(info, bytes), QDataStream::ReadPastEnd);
        QCOMPARE(info.cars.size(), carCount);
        QVERIFY(info.cars.capacity() * qsizetype{sizeof(CarInfo)} < 90 * bytes.size());
    }

    void formerErrorStays()
    {
        CarInfo car;
        QDataStream stream(streamed(filledCar(u"d "_s)));
        stream.setStatus(QDataStream::ReadCorruptData);
        stream >> car;
        QVERIFY(same(car, filledCar(u"d "_s)));
        QCOMPARE(stream.status(), QDataStream::ReadCorruptData);
    }
};

QTEST_GUILESS_MAIN(TestStreams)
#include "tst_streams.moc"
