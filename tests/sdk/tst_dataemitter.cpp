// The signal hub: what its meta-object says, and what crosses from thread to thread.

#include "sdk/dataemitter.h"
#include "testing.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QMetaType>

#include <thread>

using namespace KOV::SDK;
using namespace Testing;

namespace {

template <typename T>
QMetaType typeOf()
{
    return QMetaType::fromType<T>();
}

/// The letters of the operations that @p type has: default, copy and move construction, destruction, equality,
/// less-than, QDebug, stream out and in, meta-object.
QByteArray operations(QMetaType type)
{
    const QtPrivate::QMetaTypeInterface *hooks = type.iface();
    QByteArray letters;
    const auto add = [&letters](bool isThere, char letter) {
        letters += isThere ? QByteArray(1, letter) : QByteArray();
    };
    add(hooks->defaultCtr, 'd');
    add(hooks->copyCtr, 'c');
    add(hooks->moveCtr, 'm');
    add(hooks->dtor, 'x');
    add(hooks->equals, '=');
    add(hooks->lessThan, '<');
    add(hooks->debugStream, 'D');
    add(hooks->dataStreamOut, 'o');
    add(hooks->dataStreamIn, 'i');
    add(type.metaObject(), 'M');
    return letters;
}

} // namespace

class TestDataEmitter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void metaObject()
    {
        const QMetaObject &meta = DataEmitter::staticMetaObject;
        QCOMPARE(meta.className(), "KOV::SDK::DataEmitter");
        QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
        QCOMPARE(meta.metaType(), typeOf<DataEmitter>());
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 11);
        QCOMPARE(meta.propertyCount(), meta.propertyOffset());
        QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    }

    void signalsInOrder_data()
    {
        const Table<QList<QByteArray>, QList<QMetaType>> row("names", "types");
        row("sendConnected()", {}, {});
        row("sendDisconnected()", {}, {});
        row("sendNotConnected()", {}, {});
        row("sendConnectivityAvailable(bool)", {"available"}, {typeOf<bool>()});
        row("sendTelemetryLap(QSharedPointer<KOV::SDK::Lap>)", {"lap"}, {typeOf<QSharedPointer<Lap>>()});
        row("sendTelemetryLapHeader(KOV::SDK::LapHeader)", {"header"}, {typeOf<LapHeader>()});
        row("sendCarListChanged(KOV::SDK::LivePluginInfo)", {"pluginInfo"}, {typeOf<LivePluginInfo>()});
        row("sendSample(KOV::SDK::Sample)", {"sample"}, {typeOf<Sample>()});
        row("sendSessionInfo(KOV::SDK::SessionInfo)", {"sessionInfo"}, {typeOf<SessionInfo>()});
        row("sendMessage(QString,int)", {"message", "verbose"}, {typeOf<QString>(), typeOf<int>()});
        row("sendProgress(int)", {"percent"}, {typeOf<int>()});
    }
    void signalsInOrder()
    {
        QFETCH(QList<QByteArray>, names);
        QFETCH(QList<QMetaType>, types);
        const QMetaObject &meta = DataEmitter::staticMetaObject;
        const int index = meta.indexOfSignal(QTest::currentDataTag());
        QCOMPARE(index, meta.methodOffset() + nextSignal++);
        const QMetaMethod method = meta.method(index);
        QCOMPARE(method.methodSignature(), QTest::currentDataTag());
        QCOMPARE(method.methodType(), QMetaMethod::Signal);
        QCOMPARE(method.access(), QMetaMethod::Public);
        QCOMPARE(method.returnMetaType(), typeOf<void>());
        QCOMPARE(method.parameterNames(), names);
        QCOMPARE(method.parameterCount(), static_cast<int>(types.size()));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(method.parameterMetaType(i), types.value(i));
            // What is registered ahead of a queued connection, which qt_metacall tells.
            QMetaType registered = typeOf<DataEmitter>();
            void *arguments[]{&registered, &i};
            DataEmitter emitter;
            QMetaObject::metacall(&emitter, QMetaObject::RegisterMethodArgumentMetaType, index, arguments);
            QCOMPARE(registered, types.value(i) == typeOf<Sample>() ? typeOf<Sample>() : QMetaType());
        }
    }

    void metaTypes_data()
    {
        // What is "newer" differs between Qt 6.4 and 6.9: it is not compared before 6.9.
        const Table<QMetaType, QByteArray, QByteArray> row("type", "expected", "newer");
        row("KOV::SDK::DataEmitter", typeOf<DataEmitter>(), "dxM", "M");
        row("QSharedPointer<KOV::SDK::Lap>", typeOf<QSharedPointer<Lap>>(), "dcmx=<D", "");
        row("KOV::SDK::LapHeader", typeOf<LapHeader>(), "dcmx", "");
        row("KOV::SDK::LivePluginInfo", typeOf<LivePluginInfo>(), "dcmxoi", "");
        row("KOV::SDK::Sample", typeOf<Sample>(), "dcmxoi", "");
        // Qt 6.4 has hooks for copies that are copies of bytes, too.
        row("KOV::SDK::SessionInfo", typeOf<SessionInfo>(), "d", "cm");
    }
    void metaTypes()
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
        QVERIFY(
            !(type.flags() & (QMetaType::IsPointer | QMetaType::SharedPointerToQObject | QMetaType::IsEnumeration)));
        QVERIFY(type.id() >= QMetaType::User);
        QCOMPARE(QMetaType::fromName(type.name()), type);
    }

    void queuedBetweenThreads()
    {
        const auto lap = QSharedPointer<Lap>::create();
        lap->addChannel(QSharedPointer<Channel>::create(std::initializer_list<double>{1.0, 2.0}), u"speed"_s);
        DataEmitter emitter;
        QStringList seen;
        const auto on = [&](auto signal, auto textOf) {
            const auto note = [&seen, textOf](const auto &...arguments) { seen.append(textOf(arguments...)); };
            QVERIFY(connect(&emitter, signal, this, note, Qt::QueuedConnection));
        };
        on(&DataEmitter::sendConnected, [] { return u"on"_s; });
        on(&DataEmitter::sendDisconnected, [] { return u"off"_s; });
        on(&DataEmitter::sendNotConnected, [] { return u"none"_s; });
        on(&DataEmitter::sendConnectivityAvailable, [](bool available) { return QString::number(available); });
        on(&DataEmitter::sendMessage, [](const QString &text, int level) { return text + QString::number(level); });
        on(&DataEmitter::sendProgress, [](int percent) { return QString::number(percent); });
        on(&DataEmitter::sendTelemetryLap, [&lap](const QSharedPointer<Lap> &sameLap) {
            sameLap->channel(u"speed"_s)->append(3.0);
            return sameLap == lap ? u"same lap"_s : u"another lap"_s;
        });
        on(&DataEmitter::sendTelemetryLapHeader,
           [](const LapHeader &header) { return header.venueName + header.dynamicData.value(u"fuel"_s).unit(); });
        on(&DataEmitter::sendCarListChanged, [](const LivePluginInfo &info) { return info.cars.at(1).carName; });
        on(&DataEmitter::sendSample,
           [](const Sample &sample) { return sample.driverName + sample.dynamicData.value(u"rpm"_s).toString(); });
        on(&DataEmitter::sendSessionInfo, [](SessionInfo) { return u"session"_s; });
        std::thread sender([&emitter, lap] {
            LapHeader header;
            header.venueName = u"venue "_s;
            header.dynamicData.setValue(u"fuel"_s, 40.5, u"l"_s);
            LivePluginInfo info;
            info.cars.resize(2);
            info.cars[1].carName = u"second car"_s;
            Sample sample;
            sample.driverName = u"driver "_s;
            sample.dynamicData.setValue(u"rpm"_s, 9000, u"1/min"_s);
            Q_EMIT emitter.sendConnected();
            Q_EMIT emitter.sendDisconnected();
            Q_EMIT emitter.sendNotConnected();
            Q_EMIT emitter.sendConnectivityAvailable(true);
            Q_EMIT emitter.sendMessage(u"message "_s, 7);
            Q_EMIT emitter.sendProgress(42);
            Q_EMIT emitter.sendTelemetryLap(lap);
            Q_EMIT emitter.sendTelemetryLapHeader(header);
            Q_EMIT emitter.sendCarListChanged(info);
            Q_EMIT emitter.sendSample(sample);
            Q_EMIT emitter.sendSessionInfo(SessionInfo());
        });
        sender.join();
        QVERIFY(seen.isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(seen.join(u'|'), u"on|off|none|1|message 7|42|same lap|venue l|second car|driver 9000|session"_s);
        QVERIFY(sameSamples(*lap, "speed", {1.0, 2.0, 3.0}));
    }

private:
    int nextSignal = 0;
};

QTEST_GUILESS_MAIN(TestDataEmitter)
#include "tst_dataemitter.moc"
