// The stream forms of cars, compared with what Qt makes of the same maps, and damaged streams.

#include "testing.h"

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"

#include <QtCore/QBitArray>
#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QDataStream>
#include <QtCore/QEasingCurve>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QTimeZone>

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

/// The map of the car that @p map means by QVariant's own conversions.
Map convertedMap(const Map &map)
{
    Map converted{{u"status"_s, map[u"status"_s].toInt()},
                  {u"detailedTelemetry"_s, map[u"detailedTelemetry"_s].toBool()}};
    for (const auto &text : texts)
        converted.insert(text.first, map[text.first].toString());
    return converted;
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

constexpr quint32 huge = 0xfffffff0U;
constexpr int highest = std::numeric_limits<int>::max();

} // namespace

class TestStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyVersion()
    {
        for (int version = QDataStream::Qt_3_3; version <= QDataStream::Qt_DefaultCompiledVersion; ++version) {
            for (const CarInfo &car : {CarInfo(), filledCar(u"a "_s)}) {
                QByteArray bytes;
                QByteArray expected;
                QDataStream writer(&bytes, QIODevice::WriteOnly);
                QDataStream reference(&expected, QIODevice::WriteOnly);
                QDataStream reader(&bytes, QIODevice::ReadOnly);
                for (QDataStream *stream : {&writer, &reference, &reader}) {
                    stream->setVersion(version);
                    stream->setByteOrder(version % 2 == 0 ? QDataStream::BigEndian : QDataStream::LittleEndian);
                }
                writer << car;
                reference << mapOf(car);
                QVERIFY2(bytes == expected, QByteArray::number(version));

                CarInfo read = filledCar(u"former "_s);
                reader >> read;
                QVERIFY2(reader.status() == QDataStream::Ok && reader.atEnd(), QByteArray::number(version));
                QCOMPARE(mapOf(read), mapOf(car));
            }
        }
    }

    // Each type that Qt Core streams, under keys that convert it, under one that is ignored, and in a list.
    void valuesOfAnyType()
    {
        const QDateTime time(QDate(2020, 2, 29), QTime(1, 2, 3));
        QEasingCurve bezier(QEasingCurve::BezierSpline);
        bezier.addCubicBezierSegment({.1, .2}, {.3, .4}, {1, 1});
        QVariantList values{-1,
                            4711,
                            2U,
                            u"6"_s,
                            u"false"_s,
                            4.6,
                            7LL,
                            3e9,
                            "bytes"_ba,
                            time,
                            time.toUTC(),
                            time.toOffsetFromUtc(3600),
                            QStringList{u"one"_s},
                            QStringList{u"one"_s, u"two"_s},
                            QVariantMap{{u"carId"_s, QVariantHash{{u"x"_s, QVariant()}}}},
                            QBitArray(11, true),
                            QVariant::fromValue(QByteArrayList{"x", "y"}),
                            QVariant::fromValue(bezier),
                            QVariant::fromValue(QVariantPair(1, QVariant::fromValue(QVariantPair(u"x"_s, 2))))};
        for (const QJsonValue &value :
             {QJsonValue(u"12"_s), QJsonValue(3.6), QJsonValue(true), QJsonValue(QJsonArray{1})})
            values += QVariantList{value, QVariant::fromValue(QCborValue::fromJsonValue(value))};
        values += QVariantList{QJsonObject{{u"x"_s, 1}}, QJsonArray{1}, QJsonDocument(QJsonArray{1}), u'c'};
        values += QVariant::fromValue(QCborMap{{1, 2}});
        values += QVariant::fromValue(QCborArray{1});
        values += QVariant::fromValue(QCborValue(QUrl(u"http://x"_s)));
        for (int id = 0; id < 128; ++id) {
            if (id == 0 || (QMetaType::isRegistered(id) && QMetaType(id).hasRegisteredDataStreamOperators()))
                values += QVariant(QMetaType(id));
        }
        const QVariant one(1);
        values += QVariant(QMetaType::fromType<QVariant>(), &one);
        values += QVariant(values);
        for (int version = QDataStream::Qt_1_0; version <= QDataStream::Qt_DefaultCompiledVersion; ++version) {
            for (const QVariant &value : std::as_const(values)) {
                for (const QString &key : {u"carId"_s, u"detailedTelemetry"_s, u"further"_s, u"status"_s}) {
                    QByteArray bytes;
                    Map expected;
                    CarInfo car;
                    QDataStream writer(&bytes, QIODevice::WriteOnly);
                    QDataStream reference(&bytes, QIODevice::ReadOnly);
                    QDataStream reader(&bytes, QIODevice::ReadOnly);
                    for (QDataStream *stream : {&writer, &reference, &reader})
                        stream->setVersion(version);
                    writer << Map{{key, value}, {u"teamName"_s, u"after"_s}};
                    reference >> expected;
                    reader >> car;
                    const QByteArray what = QByteArray::number(version) + ' ' + value.typeName() + ' ' + key.toLatin1();
                    QVERIFY2(expected.size() == 2 && mapOf(car) == convertedMap(expected), what);
                    QVERIFY2(reader.status() == QDataStream::Ok && reader.atEnd(), what);
                }
            }
        }
    }

    // Qt opens a file by the zone's name, and crashes at a conversion of CBOR that is cut off.
    void dangerousOnesAreNoValues()
    {
        const QDate date(2020, 2, 29);
        const QTime time(1, 2, 3);
        const QByteArray named =
            streamed(quint32{QMetaType::QDateTime}, qint8(0), date, time, qint8(Qt::TimeZone), u"zone"_s);
        const QByteArray cut = streamed(quint32{QMetaType::QCborValue}, qint8(0), "\x41"_ba);
        for (const QByteArray &value : {named, cut, streamed(QVariant(QDateTime(date, time, QTimeZone(3600))))}) {
            CarInfo car;
            const QByteArray after = streamed(u"teamName"_s, QVariant(u"after"_s));
            QCOMPARE(readInto(car, streamed(2U, u"carId"_s) + value + after), QDataStream::Ok);
            QCOMPARE(mapOf(car), convertedMap({{u"teamName"_s, u"after"_s}}));
        }
    }

    // At some of these kinds of times Qt crashes, and at others and at types that it does not have it prints a warning.
    void unknownKindsAreQuiet()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        for (int version = QDataStream::Qt_4_2; version <= QDataStream::Qt_DefaultCompiledVersion; ++version) {
            for (int kind = -128; kind < 128; ++kind) {
                if (version >= QDataStream::Qt_5_2 && (kind == Qt::OffsetFromUTC || kind == Qt::TimeZone))
                    continue; // more follows
                QByteArray bytes;
                QDataStream writer(&bytes, QIODevice::WriteOnly);
                QDataStream reader(&bytes, QIODevice::ReadOnly);
                for (QDataStream *stream : {&writer, &reader})
                    stream->setVersion(version);
                writer << 2U << u"carId"_s << quint32{QMetaType::QDateTime} << qint8(0) << QDate(2020, 2, 29)
                       << QTime(1, 2, 3) << static_cast<qint8>(kind) << u"teamName"_s << QVariant(u"after"_s);
                CarInfo car;
                reader >> car;
                QVERIFY(reader.status() == QDataStream::Ok && reader.atEnd() && car.teamName == u"after");
                const bool isKnown = kind >= 0 && kind < 3;
                QVERIFY(isKnown ? !car.carId.isEmpty() : car.carId.isEmpty() || (kind >= -1 && kind <= 3));
            }
        }
        CarInfo car;
        readInto(car, streamed(1U, u"carId"_s, 63U, qint8(0), quint16(0)));
    }

    void laterKeyCountsAndFormerErrorStays()
    {
        CarInfo car = filledCar(u"former "_s); // of which nothing stays
        const QString key = u"carId"_s;
        QDataStream stream(streamed(2U, key, QVariant(u"first"_s), key, QVariant(u"later"_s)));
        stream.setStatus(QDataStream::ReadCorruptData);
        stream >> car;
        QCOMPARE(mapOf(car), convertedMap({{key, u"later"_s}}));
        QCOMPARE(stream.status(), QDataStream::ReadCorruptData);
    }

    void sampleIsItsCar()
    {
        const CarInfo car = filledCar(u"c "_s);
        Sample sample;
        sample.dynamicData.setValue(u"speed"_s, 1.0, u"m/s"_s);
        QCOMPARE(readInto(sample, streamed(car)), QDataStream::Ok);
        QCOMPARE(mapOf(sample), mapOf(car));
        QCOMPARE(sample.dynamicData.value(u"speed"_s), Value(1.0, u"m/s"_s));
        QCOMPARE(streamed(sample), streamed(car));
    }

    void lists()
    {
        const LivePluginInfo list{
            {filledCar(u"a "_s), filledCar(u"b "_s), filledCar(u"c "_s)}, u"second"_s, u"first"_s};
        for (const int claimed : {std::numeric_limits<int>::min(), -1, 0, 1, 3, 4, highest}) {
            QByteArray bytes = streamed(list.streamFirstName, list.streamSecondName, claimed);
            for (const CarInfo &car : list.cars)
                bytes += streamed(mapOf(car));
            QCOMPARE(bytes == streamed(list), claimed == 3);
            LivePluginInfo read;
            read.cars.resize(7);
            QCOMPARE(readInto(read, bytes), claimed > 3 ? QDataStream::ReadPastEnd : QDataStream::Ok);
            QVERIFY(read.streamFirstName == u"first"_s && read.streamSecondName == u"second"_s);
            QCOMPARE(read.cars.size(), std::clamp(claimed, 0, 3));
            for (qsizetype i = 0; i < read.cars.size(); ++i)
                QCOMPARE(mapOf(read.cars[i]), mapOf(list.cars[i]));
        }

        const QByteArray bytes = streamed(list);
        const qsizetype carSize = streamed(list.cars[0]).size();
        for (qsizetype length = 0; length < bytes.size(); ++length) {
            LivePluginInfo read = list;
            QCOMPARE(readInto(read, bytes.first(length)), QDataStream::ReadPastEnd);
            QCOMPARE(read.cars.size(), std::max(2 - (bytes.size() - length - 1) / carSize, qsizetype{0}));
        }
    }

    void damaged_data()
    {
        const Table<QByteArray, Status> row("value", "status");
        const auto head = [](int type) { return streamed(static_cast<quint32>(type), qint8(0)); };
        const QByteArray listOfOne = head(QMetaType::QVariantList) + streamed(1U);

        for (const int type : {QMetaType::QString, QMetaType::QByteArray, QMetaType::QStringList,
                               QMetaType::QByteArrayList, QMetaType::QVariantList, QMetaType::QVariantMap,
                               QMetaType::QVariantHash, QMetaType::QJsonDocument, QMetaType::QCborValue})
            row("endless "_ba + QMetaType(type).name(), head(type) + streamed(huge), QDataStream::ReadPastEnd);
        row("endless bits", head(QMetaType::QBitArray) + streamed(~quint64(0)), QDataStream::ReadPastEnd);
        row("endless curve", head(QMetaType::QEasingCurve) + QByteArray(9, '\0') + '\1' + streamed(1., 1., 1., huge),
            QDataStream::ReadPastEnd);
        for (const int type :
             {int(QMetaType::VoidStar), int(QMetaType::QObjectStar), int(QMetaType::QColor), highest, -1})
            row("type " + QByteArray::number(type), head(type) + streamed(huge), QDataStream::ReadCorruptData);
        row("type by name", head(QMetaType::User) + streamed("Unheard of"_ba), QDataStream::ReadCorruptData);
        row("deepest list", listOfOne.repeated(32) + head(QMetaType::Bool), QDataStream::ReadPastEnd);
        for (const QByteArray &level : {listOfOne, head(QMetaType::QVariant), head(QMetaType::QVariantPair)})
            row("nested too deep: " + level.toHex(), level.repeated(1'000'000), QDataStream::ReadCorruptData);
    }
    void damaged()
    {
        QFETCH(QByteArray, value);
        QFETCH(Status, status);
        // The entry before it is sound, and lost with the rest of its map.
        const QByteArray map = streamed(huge, u"carId"_s, QVariant(u"sound"_s), u"further"_s) + value;
        CarInfo car = filledCar(u"former "_s);
        QCOMPARE(readInto(car, map), status);
        QCOMPARE(mapOf(car), convertedMap({}));
        QVERIFY(car.carId.isNull());
    }

    void emptyCarsAreCheap()
    {
        constexpr qsizetype carCount = 1 << 18;
        const QByteArray bytes = streamed(QString(), QString(), highest) + QByteArray(4 * carCount, '\0');
        LivePluginInfo info;
        QCOMPARE(readInto(info, bytes), QDataStream::ReadPastEnd);
        QCOMPARE(info.cars.size(), carCount);
        QVERIFY(info.cars.capacity() * qsizetype{sizeof(CarInfo)} < 90 * bytes.size());
    }
};

QTEST_GUILESS_MAIN(TestStreams)
#include "tst_streams.moc"
