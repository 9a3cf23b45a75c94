#include "testing.h"

#include "sdk/sdk_utils.h"

#include <limits>

using namespace KOV::SDK;
using Testing::sameSamples;

namespace {

Sample row(std::initializer_list<std::pair<const char *, double>> values, const char *unit = "m")
{
    Sample sample;
    for (const auto &[name, value] : values)
        sample.dynamicData.setValue(QString::fromUtf8(name), value, QString::fromUtf8(unit));
    return sample;
}

constexpr double none = invalidValue;

} // namespace

class TestLap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void constantsHaveTheirBits();
    void validity_data();
    void validity();
    void rowsKeepChannelsOneLength_data();
    void rowsKeepChannelsOneLength();
    void firstUnitStays();
    void unconvertibleValueIsZero();
    void copiesShareChannels();
    void clearKeepsTheHeader();
    void nameListsAreSorted();
    void dynamicDataReplacesAndTells();
    void valuesCompareUnitsFirst();
    void channelsByName();
    void defaults();
};

void TestLap::constantsHaveTheirBits()
{
    QCOMPARE(std::bit_cast<quint64>(invalidValue), 0x45208B2A20000000ULL);
    QCOMPARE(std::bit_cast<quint64>(invalidThreshold), 0x44EA784380000000ULL);
}

void TestLap::validity_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("valid");
    using limits = std::numeric_limits<double>;
    QTest::newRow("invalidValue") << invalidValue << false;
    QTest::newRow("threshold") << invalidThreshold << false;
    QTest::newRow("just below") << std::nextafter(invalidThreshold, 0.0) << true;
    QTest::newRow("infinity") << limits::infinity() << false;
    QTest::newRow("-infinity") << -limits::infinity() << true;
    QTest::newRow("NaN") << limits::quiet_NaN() << false;
    QTest::newRow("zero") << 0.0 << true;
    QTest::newRow("-1e30") << -1e30 << true;
}

void TestLap::validity()
{
    QFETCH(double, value);
    QFETCH(bool, valid);
    const Channel channel{1.0, value};
    QCOMPARE(channel.isValid(1), valid);
    QCOMPARE(isValidValue(value), valid);
}

using Rows = std::vector<Sample>;
using Columns = std::map<const char *, std::vector<double>>;

void TestLap::rowsKeepChannelsOneLength_data()
{
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<Columns>("columns");
    const auto add = [](const char *name, const Rows &rows, const Columns &columns) {
        QTest::newRow(name) << rows << columns;
    };
    const Sample empty;
    add("plain", {row({{"a", 1}, {"b", 2}}), row({{"a", 3}, {"b", 4}})}, {{"a", {1, 3}}, {"b", {2, 4}}});
    add("lacks b", {row({{"a", 1}, {"b", 2}}), row({{"a", 3}})}, {{"a", {1, 3}}, {"b", {2, none}}});
    add("brings c", {row({{"a", 1}}), row({{"a", 2}}), row({{"a", 3}, {"c", 4}})},
        {{"a", {1, 2, 3}}, {"c", {none, none, 4}}});
    add("brings c in row two", {row({{"a", 1}}), row({{"a", 2}, {"c", 4}})}, {{"a", {1, 2}}, {"c", {none, 4}}});
    add("lacks b and brings c", {row({{"a", 1}, {"b", 2}}), row({{"a", 3}, {"c", 4}})},
        {{"a", {1, 3}}, {"b", {2, none}}, {"c", {none, 4}}});
    add("all names new", {row({{"a", 1}}), row({{"b", 2}})}, {{"a", {1, none}}, {"b", {none, 2}}});
    add("empty row", {row({{"a", 1}, {"b", 2}}), empty}, {{"a", {1, none}}, {"b", {2, none}}});
    add("empty first row", {empty, row({{"a", 1}})}, {{"a", {1}}});
    add("names differ in case", {row({{"a", 1}, {"A", 2}})}, {{"a", {1}}, {"A", {2}}});
}

void TestLap::rowsKeepChannelsOneLength()
{
    QFETCH(Rows, rows);
    QFETCH(Columns, columns);
    Lap lap;
    for (const Sample &sample : rows)
        lap.addSample(sample);
    QCOMPARE(lap.getAvailableRecordedChannels().size(), static_cast<qsizetype>(columns.size()));
    for (const auto &[name, values] : columns)
        QVERIFY(sameSamples(lap, name, values));
    QCOMPARE(lap.size(), static_cast<long long>(columns.begin()->second.size()));
}

void TestLap::firstUnitStays()
{
    Lap lap;
    lap.addSample(row({{"a", 1}}, "km"));
    lap.addSample(row({{"a", 2}, {"b", 3}}, "mi"));
    QCOMPARE(lap.channel(QStringLiteral("a"))->unit(), QStringLiteral("km"));
    QCOMPARE(lap.channel(QStringLiteral("b"))->unit(), QStringLiteral("mi"));
}

void TestLap::unconvertibleValueIsZero()
{
    Sample sample;
    sample.dynamicData.setValue(QStringLiteral("a"), QStringLiteral("text"), QString());
    Lap lap;
    lap.addSample(sample);
    lap.addSample(sample);
    QVERIFY(sameSamples(lap, "a", {0.0, 0.0}));
}

void TestLap::copiesShareChannels()
{
    Lap lap;
    lap.addSample(row({{"a", 1}}));
    lap.header().dynamicData.setValue(QStringLiteral("fuel"), 10.0, QString());
    Lap copy;
    copy = lap;
    copy.channel(QStringLiteral("a"))->append(2.0);
    copy.header().dynamicData.setValue(QStringLiteral("fuel"), 20.0, QString());
    QVERIFY(sameSamples(lap, "a", {1.0, 2.0}));
    QCOMPARE(lap.header().dynamicData.value(QStringLiteral("fuel")).toDouble(), 10.0);
}

void TestLap::clearKeepsTheHeader()
{
    Lap lap;
    lap.addSample(row({{"a", 1}}));
    lap.header().lapId = QUuid::createUuid();
    lap.header().carInfo.carName = QStringLiteral("car");
    lap.header().dynamicData.setValue(QStringLiteral("fuel"), 1.0, QString());
    const QUuid id = lap.header().lapId;
    const auto channel = lap.channel(QStringLiteral("a"));
    lap.clear();
    QVERIFY(lap.isEmpty());
    QVERIFY(lap.header().dynamicData.isEmpty());
    QCOMPARE(lap.header().lapId, id);
    QCOMPARE(lap.header().carInfo.carName, QStringLiteral("car"));
    QCOMPARE(channel->size(), 1);
}

void TestLap::nameListsAreSorted()
{
    const QList<QString> sorted{QStringLiteral("C"), QStringLiteral("a"), QStringLiteral("b")};
    const Sample sample = row({{"b", 1}, {"a", 2}, {"C", 3}});
    QCOMPARE(sample.dynamicData.valueNameList(), sorted);
    Lap lap;
    lap.addSample(sample);
    QCOMPARE(lap.getAvailableRecordedChannels(), sorted);
}

void TestLap::dynamicDataReplacesAndTells()
{
    const QString name = QStringLiteral("x");
    DynamicData data;
    QVERIFY(data.asRange().begin() == data.asRange().end());
    QVERIFY(!data.value(name).isValid());
    QVERIFY(data.isEmpty());
    data.setValue(name, 1.0, QStringLiteral("m"));
    data.setValue(name, 2.0, QString());
    QCOMPARE(data.size(), 1);
    QCOMPARE(data.value(name).toDouble(), 2.0);
    QVERIFY(data.value(name).unit().isNull());
    data.setValue(name, Value());
    QVERIFY(data.containsValue(name));
    QVERIFY(!data.value(name).isValid());
    data.removeValue(QStringLiteral("other"));
    QCOMPARE(data.size(), 1);
    data.removeValue(name);
    QVERIFY(!data.containsValue(name));
}

void TestLap::valuesCompareUnitsFirst()
{
    const QString metre = QStringLiteral("m");
    QVERIFY(Value(1.0, metre) == Value(1.0, metre));
    QVERIFY(Value(1.0, metre) != Value(2.0, metre));
    QVERIFY(Value(1.0, metre) != Value(1.0, QStringLiteral("km")));
    QVERIFY(Value(1.0, QString()) == Value(1.0, QStringLiteral("")));
}

void TestLap::channelsByName()
{
    const QString name = QStringLiteral("speed");
    const auto recorded = QSharedPointer<Channel>::create(std::initializer_list<double>{1.0, 2.0});
    const auto calculated = QSharedPointer<Channel>::create(std::initializer_list<double>{3.0, 4.0, 5.0});
    Lap lap;
    QCOMPARE(lap.size(), 0);
    lap.addCalculatedChannel(calculated, name);
    QCOMPARE(lap.size(), 3);
    QVERIFY(!lap.channel(name) && !lap.containsRecordedChannel(name) && lap.containsChannel(name));
    lap.addChannel(QSharedPointer<Channel>::create(), name);
    lap.addChannel(recorded, name);
    QVERIFY(lap.containsRecordedChannel(name) && lap.containsCalculatedChannel(name));
    QCOMPARE(lap.channel(name), recorded);
    QCOMPARE(lap.calculatedChannel(name), calculated);
    QCOMPARE(lap.getAvailableCalculatedChannels(), QList<QString>{name});
    lap.removeRecordedChannel(name);
    lap.removeRecordedChannel(name);
    QVERIFY(!lap.channel(name) && lap.calculatedChannel(name));
    lap.removeCalculatedChannel(name);
    QVERIFY(lap.isEmpty());
}

void TestLap::defaults()
{
    const LapHeader header;
    QVERIFY(!header.lapTime.isValid() && !header.dateTime.isValid());
    QVERIFY(header.lapId.isNull() && header.stintId.isNull() && header.sessionId.isNull());
    QCOMPARE(sessionName(header.session), QStringLiteral("Unknown session"));
    QCOMPARE(header.lapKind, -1);
    QCOMPARE(header.stintNumber, 0);
    QVERIFY(!header.completed);
    QCOMPARE(carStatusToString(header.carInfo.status), QStringLiteral("Not connected"));
    QVERIFY(header.carInfo.detailedTelemetry);
}

QTEST_APPLESS_MAIN(TestLap)
#include "tst_lap.moc"
