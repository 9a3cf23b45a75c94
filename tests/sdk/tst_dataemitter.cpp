// The signal hub: what its meta-object says, and what crosses from thread to thread.

#include "sdk/dataemitter.h"
#include "testing.h"

#include <QtCore/QMetaMethod>

#include <thread>

using namespace KOV::SDK;
using namespace Testing;

class TestDataEmitter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsInOrder()
    {
        const std::pair<QByteArray, QByteArray> expected[]{
            {"sendConnected()", ""},
            {"sendDisconnected()", ""},
            {"sendNotConnected()", ""},
            {"sendConnectivityAvailable(bool)", "available"},
            {"sendTelemetryLap(QSharedPointer<KOV::SDK::Lap>)", "lap"},
            {"sendTelemetryLapHeader(KOV::SDK::LapHeader)", "header"},
            {"sendCarListChanged(KOV::SDK::LivePluginInfo)", "pluginInfo"},
            {"sendSample(KOV::SDK::Sample)", "sample"},
            {"sendSessionInfo(KOV::SDK::SessionInfo)", "sessionInfo"},
            {"sendMessage(QString,int)", "message,verbose"},
            {"sendProgress(int)", "percent"}};
        const QMetaObject &meta = DataEmitter::staticMetaObject;
        QCOMPARE(meta.className(), "KOV::SDK::DataEmitter");
        QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
        QCOMPARE(meta.methodCount() - meta.methodOffset(), std::ssize(expected));
        int index = meta.methodOffset();
        for (const auto &[signature, names] : expected) {
            const QMetaMethod method = meta.method(index++);
            QCOMPARE(method.methodSignature(), signature);
            QCOMPARE(method.parameterNames().join(','), names);
            QCOMPARE(method.methodType(), QMetaMethod::Signal);
            QCOMPARE(method.returnMetaType(), QMetaType::fromType<void>());
            for (int i = 0; i < method.parameterCount(); ++i)
                QCOMPARE(method.parameterMetaType(i).name(), method.parameterTypes().at(i));
        }
    }

    /// What a host can do with a type: d default construction, = and < comparison, D QDebug, s data streams.
    void metaTypes()
    {
        const std::pair<QMetaType, QByteArray> expected[]{
            {QMetaType::fromType<DataEmitter>(), "d"}, {QMetaType::fromType<QSharedPointer<Lap>>(), "d=<D"},
            {QMetaType::fromType<LapHeader>(), "d"},   {QMetaType::fromType<LivePluginInfo>(), "ds"},
            {QMetaType::fromType<Sample>(), "ds"},     {QMetaType::fromType<SessionInfo>(), "d"}};
        for (const auto &[type, letters] : expected) {
            const bool has[]{type.iface()->defaultCtr != nullptr, type.isEqualityComparable(), type.isOrdered(),
                             type.hasRegisteredDebugStreamOperator(), type.hasRegisteredDataStreamOperators()};
            for (std::size_t i = 0; i < std::size(has); ++i)
                QVERIFY2(has[i] == letters.contains("d=<Ds"[i]), type.name());
            QVERIFY2(type.flags().testFlag(QMetaType::NeedsConstruction), type.name());
        }
        QVERIFY(QMetaTypeId<Sample>::Defined && !QMetaTypeId<LapHeader>::Defined);
    }

    void queuedBetweenThreads()
    {
        const auto lap = QSharedPointer<Lap>::create();
        DataEmitter emitter;
        QStringList seen;
        const auto on = [&](auto signal, auto note) {
            QVERIFY(connect(&emitter, signal, this, note, Qt::QueuedConnection));
        };
        on(&DataEmitter::sendTelemetryLap, [&](const QSharedPointer<Lap> &sent) { seen += sent->header().venueName; });
        on(&DataEmitter::sendCarListChanged, [&](const LivePluginInfo &info) { seen += info.cars.at(1).carName; });
        on(&DataEmitter::sendSample, [&](const Sample &sample) { seen += sample.driverName; });
        std::thread sender([&emitter, lap] {
            LivePluginInfo info;
            info.cars.resize(2);
            info.cars[1].carName = u"second car"_s;
            Sample sample;
            sample.driverName = u"driver"_s;
            Q_EMIT emitter.sendTelemetryLap(lap);
            Q_EMIT emitter.sendCarListChanged(info);
            Q_EMIT emitter.sendSample(sample);
        });
        sender.join();
        QVERIFY(seen.isEmpty());
        lap->header().venueName = u"shared"_s;
        QCoreApplication::processEvents();
        QCOMPARE(seen.join(u'|'), u"shared|second car|driver"_s);
    }
};

QTEST_GUILESS_MAIN(TestDataEmitter)
#include "tst_dataemitter.moc"
