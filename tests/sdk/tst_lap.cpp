// Laps, their channels and named values, and the texts of a header's numbers.

#include "testing.h"

#include "sdk/sdk_utils.h"

#include <array>
#include <cmath>
#include <functional>

using namespace KOV::SDK;
using namespace Testing;

namespace {

using Names = QList<QString>;

constexpr double none = invalidValue;

Sample row(const QString &unit, std::initializer_list<std::pair<const char *, QVariant>> values)
{
    Sample sample;
    for (const auto &[name, value] : values)
        sample.dynamicData.setValue(QString::fromUtf8(name), value, unit);
    return sample;
}

} // namespace

class TestLap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void validity()
    {
        QCOMPARE(std::bit_cast<quint64>(invalidValue), 0x45208B2A20000000ULL);
        QCOMPARE(std::bit_cast<quint64>(invalidThreshold), 0x44EA784380000000ULL);
        for (const double value : {std::nextafter(invalidThreshold, 0.0), -qInf(), 0.0, -1e30})
            QVERIFY(Channel({0.0, value}).isValid(1) && isValidValue(value));
        for (const double value : {invalidValue, invalidThreshold, qInf(), qQNaN()})
            QVERIFY(!Channel({0.0, value}).isValid(1) && !isValidValue(value));
    }

    void namesOutliveTheHashSeed()
    {
        Lap lap;
        for (const bool isKnown : {false, true}) {
            for (int i = 0; i < 100; ++i) {
                QCOMPARE(lap.containsRecordedChannel(QString::number(i)), isKnown);
                lap.addChannel(QSharedPointer<Channel>::create(), QString::number(i));
            }
            QHashSeed::setDeterministicGlobalSeed();
        }
        QHashSeed::resetRandomGlobalSeed();
    }

    void rowsKeepChannelsOneLength()
    {
        Lap lap;
        const Sample rows[]{{},
                            row(u"m"_s, {{"a", 1}, {"b", 2}}),
                            row(u"km"_s, {{"a", 3}}),
                            row(u"mi"_s, {{"a", 4}, {"c", 5}}), // as many names as before
                            row(u"ft"_s, {{"a", 6}, {"b", u"text"_s}, {"c", 8}, {"A", 9}}),
                            row(u"in"_s, {{"D", 10}}),
                            {}};
        for (const Sample &sample : rows)
            lap.addSample(sample);
        const std::tuple<const char *, QString, std::vector<double>> columns[]{
            {"A", u"ft"_s, {none, none, none, 9, none, none}},
            {"a", u"m"_s, {1, 3, 4, 6, none, none}},
            {"b", u"m"_s, {2, none, none, 0, none, none}},
            {"c", u"mi"_s, {none, none, 5, 8, none, none}},
            {"D", u"in"_s, {none, none, none, none, 10, none}}};
        for (const auto &[name, unit, samples] : columns) {
            QVERIFY(sameSamples(lap, name, samples));
            QCOMPARE(lap.channel(QString::fromUtf8(name))->unit(), unit);
        }
        QCOMPARE(lap.getAvailableRecordedChannels(), Names({u"A"_s, u"D"_s, u"a"_s, u"b"_s, u"c"_s}));
    }

    void copiesAndClearing()
    {
        Lap lap;
        lap.addSample(row({}, {{"a", 1}}));
        lap.addCalculatedChannel(QSharedPointer<Channel>::create(), u"b"_s);
        lap.header().lapId = QUuid::createUuid();
        lap.header().dynamicData.setValue(u"fuel"_s, 10.0, QString());
        const Lap copy = lap; // the copy has the same channels, and a header of its own
        lap.channel(u"a"_s)->append(2.0);
        lap.clear();
        QVERIFY(lap.isEmpty() && !lap.containsChannel(u"a"_s) && !lap.containsChannel(u"b"_s));
        QVERIFY(lap.header().dynamicData.isEmpty());
        QCOMPARE(lap.header().lapId, copy.header().lapId);
        QVERIFY(sameSamples(copy, "a", {1.0, 2.0}));
        QCOMPARE(copy.header().dynamicData.value(u"fuel"_s).toDouble(), 10.0);
    }

    void valuesByName()
    {
        const QString name = u"x"_s;
        DynamicData data;
        QVERIFY(data.asRange().begin() == data.asRange().end() && !data.value(name).isValid());
        data.setValue(name, 1.0, u"m"_s);
        data.setValue(name, 2.0, QString());
        QVERIFY(data.value(name) == Value(2.0, u""_s) && data.value(name).unit().isNull());
        QVERIFY(data.value(name) != Value(2.0, u"m"_s) && data.value(name) != Value(1.0, QString()));
        data.setValue(name, Value());
        data.setValue(u"X"_s, Value());
        QCOMPARE(data.valueNameList(), Names({u"X"_s, name}));
        data.removeValue(u"other"_s);
        QVERIFY(data.containsValue(name) && !data.value(name).isValid());
        data.removeValue(name);
        QVERIFY(!data.containsValue(name));
    }

    void channelsByName()
    {
        const QString name = u"speed"_s;
        const auto recorded = QSharedPointer<Channel>::create(std::initializer_list<double>{1.0, 2.0});
        const auto calculated = QSharedPointer<Channel>::create(std::initializer_list<double>{3.0, 4.0, 5.0});
        Lap lap;
        lap.addCalculatedChannel(calculated, name);
        QVERIFY(lap.size() == 3 && !lap.channel(name) && !lap.containsRecordedChannel(name));
        QVERIFY(lap.containsChannel(name) && lap.getAvailableCalculatedChannels() == Names{name});
        lap.addChannel(QSharedPointer<Channel>::create(), name);
        lap.addChannel(recorded, name);
        QVERIFY(lap.size() == 2 && lap.containsRecordedChannel(name) && lap.containsCalculatedChannel(name));
        QVERIFY(lap.channel(name) == recorded && lap.calculatedChannel(name) == calculated);
        lap.removeRecordedChannel(name);
        QVERIFY(!lap.isEmpty() && !lap.channel(name) && lap.calculatedChannel(name));
        lap.removeCalculatedChannel(name);
        QVERIFY(lap.isEmpty());
    }

    void defaults()
    {
        const LapHeader header;
        QVERIFY(!header.lapTime.isValid() && !header.dateTime.isValid());
        QVERIFY(header.lapKind == -1 && header.stintNumber == 0 && !header.completed &&
                header.carInfo.detailedTelemetry);
        QVERIFY(header.session == Session::UnknownSession && header.carInfo.status == CarStatus::NotConnected);
    }

    void displayTexts()
    {
        QStringList sessions;
        QStringList statuses;
        for (int number = -1; number < 12; ++number)
            sessions += sessionName(static_cast<Session>(number));
        for (int number = -1; number < 9; ++number)
            statuses += carStatusToString(static_cast<CarStatus>(number));
        QCOMPARE(sessions.join(u','),
                 u"Unknown session,Test session,Practice,Qualify,Warmup,Formation lap,Race,TimeAttack,"
                 "Hotlap,Drift,Drag,Hotstint,Superpole"_s);
        QCOMPARE(statuses.join(u','), u"Undefined,Not connected,Not in world,Waiting for start,In pit stall,In pitlane,"
                                      "Out lap,Flying lap,On track,Off track"_s);
        QCOMPARE(sessionName(static_cast<Session>(127)), u"Other session"_s);
        for (const int number : {-2, 12, 126, 128}) // neither a session nor a status
            QVERIFY(sessionName(static_cast<Session>(number)) == u"Unknown session" &&
                    carStatusToString(static_cast<CarStatus>(number)).isNull());
    }

    // Hosts that were built earlier find members by their place.
    void membersInOrder()
    {
        const auto areInOrder = [](const auto &...members) {
            const std::array<const void *, sizeof...(members)> places{&members...};
            return std::is_sorted(places.begin(), places.end(), std::less<>());
        };
        const CarInfo c;
        QVERIFY(areInOrder(c, c.carId, c.sourceName, c.pluginName, c.carName, c.className, c.driverName, c.teamName,
                           c.status, c.detailedTelemetry));
        const LapHeader h;
        QVERIFY(areInOrder(h, h.dynamicData, h.carInfo, h.dateTime, h.textA, h.lapTime, h.venueName, h.textB, h.lapId,
                           h.stintId, h.sessionId, h.lapNumber, h.stintLapIndex, h.stintNumber, h.session, h.lapKind,
                           h.completed));
    }
};

QTEST_APPLESS_MAIN(TestLap)
#include "tst_lap.moc"
