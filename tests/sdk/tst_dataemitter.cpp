// The signal hub: what its meta-object says, and what crosses from thread to thread.

#include "sdk/dataemitter.h"
#include "testing.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QMetaType>
#include <QtCore/QThread>

#include <chrono>
#include <semaphore>

using namespace KOV::SDK;
using namespace Qt::StringLiterals;

namespace {

struct Signal
{
    const char *signature;
    QList<QByteArray> names;
    QList<QMetaType> types;
};

template <typename T>
QMetaType typeOf()
{
    return QMetaType::fromType<T>();
}

const Signal expectedSignals[]{
    // NOLINT(cert-err58-cpp)
    {"sendConnected()", {}, {}},
    {"sendDisconnected()", {}, {}},
    {"sendNotConnected()", {}, {}},
    {"sendConnectivityAvailable(bool)", {"available"}, {typeOf<bool>()}},
    {"sendTelemetryLap(QSharedPointer<KOV::SDK::Lap>)", {"lap"}, {typeOf<QSharedPointer<Lap>>()}},
    {"sendTelemetryLapHeader(KOV::SDK::LapHeader)", {"header"}, {typeOf<LapHeader>()}},
    {"sendCarListChanged(KOV::SDK::LivePluginInfo)", {"pluginInfo"}, {typeOf<LivePluginInfo>()}},
    {"sendSample(KOV::SDK::Sample)", {"sample"}, {typeOf<Sample>()}},
    {"sendSessionInfo(KOV::SDK::SessionInfo)", {"sessionInfo"}, {typeOf<SessionInfo>()}},
    {"sendMessage(QString,int)", {"message", "verbose"}, {typeOf<QString>(), typeOf<int>()}},
    {"sendProgress(int)", {"percent"}, {typeOf<int>()}}};

/// The letters of the operations that @p type has: default, copy and move construction, destruction, equality,
/// less-than, QDebug, stream out and in, meta-object.
QByteArray operations(QMetaType type)
{
    const QtPrivate::QMetaTypeInterface *hooks = type.iface();
    QByteArray letters;
    const auto add = [&letters](bool present, const char *letter) { letters += present ? letter : ""; };
    add(hooks->defaultCtr, "d");
    add(hooks->copyCtr, "c");
    add(hooks->moveCtr, "m");
    add(hooks->dtor, "x");
    add(hooks->equals, "=");
    add(hooks->lessThan, "<");
    add(hooks->debugStream, "D");
    add(hooks->dataStreamOut, "o");
    add(hooks->dataStreamIn, "i");
    add(type.metaObject(), "M");
    return letters;
}

LapHeader filledHeader()
{
    LapHeader header;
    header.venueName = u"venue"_s;
    header.lapNumber = 7;
    header.dynamicData.setValue(u"fuel"_s, 40.5, u"l"_s);
    return header;
}

} // namespace

class TestDataEmitter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void metaObjectHoldsTheSignals();
    void argumentMetaTypes();
    void metaTypes_data();
    void metaTypes();
    void metaCast();
    void sampleThroughItsMetaType();
    void queuedBetweenThreads();
};

void TestDataEmitter::metaObjectHoldsTheSignals()
{
    const QMetaObject &meta = DataEmitter::staticMetaObject;
    QCOMPARE(meta.className(), "KOV::SDK::DataEmitter");
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    QCOMPARE(meta.metaType(), typeOf<DataEmitter>());
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 11);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    QCOMPARE(meta.classInfoCount(), meta.classInfoOffset());
    QCOMPARE(meta.constructorCount(), 0);
    int index = meta.methodOffset();
    for (const Signal &expected : expectedSignals) {
        QCOMPARE(meta.indexOfSignal(expected.signature), index);
        const QMetaMethod method = meta.method(index++);
        QCOMPARE(method.methodSignature(), expected.signature);
        QCOMPARE(method.methodType(), QMetaMethod::Signal);
        QCOMPARE(method.access(), QMetaMethod::Public);
        QCOMPARE(method.returnMetaType(), typeOf<void>());
        QCOMPARE(method.parameterNames(), expected.names);
        QCOMPARE(method.parameterCount(), static_cast<int>(expected.types.size()));
        for (int i = 0; i < method.parameterCount(); ++i)
            QCOMPARE(method.parameterMetaType(i), expected.types[i]);
    }
}

void TestDataEmitter::argumentMetaTypes()
{
    DataEmitter emitter;
    for (int method = 0; method < 11; ++method) {
        for (int argument = 0; argument < 3; ++argument) {
            int asked = argument;
            QMetaType answer = typeOf<DataEmitter>();
            void *arguments[]{&answer, &asked};
            // By way of qt_metacall, which takes the index from QObject's methods on.
            QMetaObject::metacall(&emitter, QMetaObject::RegisterMethodArgumentMetaType,
                                  DataEmitter::staticMetaObject.methodOffset() + method, arguments);
            QCOMPARE(answer, method == 7 && argument == 0 ? typeOf<Sample>() : QMetaType());
        }
    }
}

void TestDataEmitter::metaTypes_data()
{
    QTest::addColumn<QMetaType>("type");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<QByteArray>("newer"); // differs between Qt 6.4 and 6.9: not compared before 6.9
    QTest::newRow("KOV::SDK::DataEmitter") << typeOf<DataEmitter>() << QByteArray("dxM") << QByteArray("M");
    QTest::newRow("QSharedPointer<KOV::SDK::Lap>")
        << typeOf<QSharedPointer<Lap>>() << QByteArray("dcmx=<D") << QByteArray();
    QTest::newRow("KOV::SDK::LapHeader") << typeOf<LapHeader>() << QByteArray("dcmx") << QByteArray();
    QTest::newRow("KOV::SDK::LivePluginInfo") << typeOf<LivePluginInfo>() << QByteArray("dcmxoi") << QByteArray();
    QTest::newRow("KOV::SDK::Sample") << typeOf<Sample>() << QByteArray("dcmxoi") << QByteArray();
    // Qt 6.4 has hooks for copies that are copies of bytes, too.
    QTest::newRow("KOV::SDK::SessionInfo") << typeOf<SessionInfo>() << QByteArray("d") << QByteArray("cm");
}

void TestDataEmitter::metaTypes()
{
    QFETCH(QMetaType, type);
    QFETCH(QByteArray, expected);
    QFETCH(QByteArray, newer);
    QCOMPARE(type.name(), QTest::currentDataTag());
    QByteArray actual = operations(type);
    if (QT_VERSION < QT_VERSION_CHECK(6, 9, 0)) {
        for (const char letter : std::as_const(newer)) {
            actual.replace(letter, "");
            expected.replace(letter, "");
        }
    }
    QCOMPARE(actual, expected);
    QVERIFY(type.flags().testFlag(QMetaType::NeedsConstruction));
    QVERIFY(!expected.contains('x') || type.flags().testFlag(QMetaType::NeedsDestruction));
    QVERIFY(!(type.flags() & (QMetaType::IsPointer | QMetaType::SharedPointerToQObject | QMetaType::IsEnumeration)));
    QVERIFY(type.id() >= QMetaType::User);
    QCOMPARE(QMetaType::fromName(type.name()), type);
}

void TestDataEmitter::metaCast()
{
    DataEmitter emitter;
    QCOMPARE(emitter.qt_metacast("KOV::SDK::DataEmitter"), &emitter);
    QCOMPARE(emitter.qt_metacast("QObject"), &emitter);
    QCOMPARE(emitter.qt_metacast("QThread"), nullptr);
    QCOMPARE(emitter.qt_metacast(nullptr), nullptr);
}

void TestDataEmitter::sampleThroughItsMetaType()
{
    QCOMPARE(qMetaTypeId<Sample>(), typeOf<Sample>().id());
    Sample sample;
    sample.carName = u"car"_s;
    sample.dynamicData.setValue(u"speed"_s, 1.0, u"m/s"_s);
    QByteArray bytes;
    QDataStream writer(&bytes, QIODevice::WriteOnly);
    QVERIFY(typeOf<Sample>().save(writer, &sample));
    Sample read;
    QDataStream reader(bytes);
    QVERIFY(typeOf<Sample>().load(reader, &read));
    QCOMPARE(read.carName, u"car"_s);
    QVERIFY(read.dynamicData.isEmpty());
}

void TestDataEmitter::queuedBetweenThreads()
{
    const auto lap = QSharedPointer<Lap>::create();
    lap->header() = filledHeader();
    lap->addChannel(QSharedPointer<Channel>::create(std::initializer_list<double>{1.0, 2.0}), u"speed"_s);
    LivePluginInfo info;
    info.streamFirstName = u"first"_s;
    info.cars.resize(2);
    info.cars[1].carName = u"second car"_s;
    Sample sample;
    sample.driverName = u"driver"_s;
    sample.dynamicData.setValue(u"rpm"_s, 9000, u"1/min"_s);

    // Qt's own hand-over of events is not visible to ThreadSanitizer, as Qt is not compiled with it. So the receiver
    // waits with its first event until all are sent, and the sender for the last.
    std::binary_semaphore sent(0);
    std::binary_semaphore received(0);
    DataEmitter emitter;
    QThread receiving;
    QObject receiver;
    receiver.moveToThread(&receiving);
    QStringList seen;
    const auto note = [&seen, &receiving](const QString &text) {
        seen.append(QThread::currentThread() == &receiving ? text : u"wrong thread"_s);
    };
    // clang-format off
    const QMetaObject::Connection connections[]{
        connect(&emitter, &DataEmitter::sendConnected, &receiver, [&] { note(u"connected"_s); }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendDisconnected, &receiver, [&] { note(u"disconnected"_s); }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendNotConnected, &receiver, [&] { note(u"not connected"_s); }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendConnectivityAvailable, &receiver, [&](bool available) {
            note(available ? u"available"_s : u"not available"_s);
        }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendTelemetryLap, &receiver, [&](const QSharedPointer<Lap> &sameLap) {
            note(sameLap == lap ? sameLap->header().venueName : u"another lap"_s);
            sameLap->channel(u"speed"_s)->append(3.0);
        }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendTelemetryLapHeader, &receiver, [&](const LapHeader &header) {
            note(header.venueName + QString::number(header.lapNumber) + header.dynamicData.value(u"fuel"_s).unit());
        }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendCarListChanged, &receiver, [&](const LivePluginInfo &cars) {
            note(cars.streamFirstName + cars.cars.at(1).carName);
        }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendSample, &receiver, [&](const Sample &row) {
            note(row.driverName + row.dynamicData.value(u"rpm"_s).toString());
        }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendSessionInfo, &receiver, [&](SessionInfo) { note(u"session"_s); }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendMessage, &receiver, [&](const QString &message, int verbose) {
            note(message + QString::number(verbose));
        }, Qt::QueuedConnection),
        connect(&emitter, &DataEmitter::sendProgress, &receiver, [&](int percent) {
            note(QString::number(percent));
            received.release();
        }, Qt::QueuedConnection)};
    // clang-format on
    for (const QMetaObject::Connection &connection : connections)
        QVERIFY(connection);
    QMetaObject::invokeMethod(
        &receiver, [&sent] { sent.acquire(); }, Qt::QueuedConnection);
    receiving.start();

    Q_EMIT emitter.sendConnected();
    Q_EMIT emitter.sendDisconnected();
    Q_EMIT emitter.sendNotConnected();
    Q_EMIT emitter.sendConnectivityAvailable(true);
    Q_EMIT emitter.sendTelemetryLap(lap);
    Q_EMIT emitter.sendTelemetryLapHeader(filledHeader());
    Q_EMIT emitter.sendCarListChanged(info);
    Q_EMIT emitter.sendSample(sample);
    Q_EMIT emitter.sendSessionInfo(SessionInfo());
    Q_EMIT emitter.sendMessage(u"message"_s, -3);
    Q_EMIT emitter.sendProgress(55);
    sent.release();
    QVERIFY(received.try_acquire_for(std::chrono::seconds(10)));
    receiving.quit();
    QVERIFY(receiving.wait());
    QCOMPARE(seen,
             QStringList({u"connected"_s, u"disconnected"_s, u"not connected"_s, u"available"_s, u"venue"_s,
                          u"venue7l"_s, u"firstsecond car"_s, u"driver9000"_s, u"session"_s, u"message-3"_s, u"55"_s}));
    QVERIFY(Testing::sameSamples(*lap, "speed", {1.0, 2.0, 3.0}));
}

QTEST_GUILESS_MAIN(TestDataEmitter)
#include "tst_dataemitter.moc"
