#include "testing.h"

#include "sdk/sdk_utils.h"

#include <limits>
#include <map>

using namespace KOV::SDK;
using namespace Testing;

namespace {

using Rows = std::vector<Sample>;
using Columns = std::map<const char *, std::vector<double>>;
using Names = QList<QString>;

constexpr double none = invalidValue;

Sample row(std::initializer_list<std::pair<const char *, double>> values, const char *unit = "m")
{
    Sample sample;
    for (const auto &[name, value] : values)
        sample.dynamicData.setValue(QString::fromUtf8(name), value, QString::fromUtf8(unit));
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
        using limits = std::numeric_limits<double>;
        for (const double value : {std::nextafter(invalidThreshold, 0.0), -limits::infinity(), 0.0, -1e30})
            QVERIFY(Channel({0.0, value}).isValid(1) && isValidValue(value));
        for (const double value : {invalidValue, invalidThreshold, limits::infinity(), limits::quiet_NaN()})
            QVERIFY(!Channel({0.0, value}).isValid(1) && !isValidValue(value));
    }

    void namesOutliveTheHashSeed()
    {
        const auto nameOf = [](int i) { return QString::number(i); };
        Lap lap;
        DynamicData values;
        for (int i = 0; i < 100; ++i) {
            lap.addChannel(QSharedPointer<Channel>::create(), nameOf(i));
            values.setValue(nameOf(i), i, QString());
        }
        QHashSeed::setDeterministicGlobalSeed();
        for (int i = 0; i < 100; ++i) {
            QVERIFY(lap.containsRecordedChannel(nameOf(i)));
            values.setValue(nameOf(i), -i, QString());
        }
        QHashSeed::resetRandomGlobalSeed();
        const Lap copy = lap;
        QVERIFY(copy.containsRecordedChannel(nameOf(99)));
        QCOMPARE(values.size(), 100);
    }

    void rowsKeepChannelsOneLength_data()
    {
        const Table<Rows, Columns> add("rows", "columns");
        add("plain", {row({{"a", 1}, {"b", 2}}), row({{"a", 3}, {"b", 4}})}, {{"a", {1, 3}}, {"b", {2, 4}}});
        add("lacks b", {row({{"a", 1}, {"b", 2}}), row({{"a", 3}})}, {{"a", {1, 3}}, {"b", {2, none}}});
        add("brings c", {row({{"a", 1}}), row({{"a", 2}}), row({{"a", 3}, {"c", 4}})},
            {{"a", {1, 2, 3}}, {"c", {none, none, 4}}});
        add("brings c in row two", {row({{"a", 1}}), row({{"a", 2}, {"c", 4}})}, {{"a", {1, 2}}, {"c", {none, 4}}});
        add("lacks b and brings c", {row({{"a", 1}, {"b", 2}}), row({{"a", 3}, {"c", 4}})},
            {{"a", {1, 3}}, {"b", {2, none}}, {"c", {none, 4}}});
        add("all names new", {row({{"a", 1}}), row({{"b", 2}})}, {{"a", {1, none}}, {"b", {none, 2}}});
        add("empty row", {row({{"a", 1}, {"b", 2}}), {}}, {{"a", {1, none}}, {"b", {2, none}}});
        add("empty first row", {{}, row({{"a", 1}})}, {{"a", {1}}});
        add("names differ in case", {row({{"a", 1}, {"A", 2}})}, {{"a", {1}}, {"A", {2}}});
    }
    void rowsKeepChannelsOneLength()
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

    void firstUnitStays()
    {
        Lap lap;
        lap.addSample(row({{"a", 1}}, "km"));
        lap.addSample(row({{"a", 2}, {"b", 3}}, "mi"));
        QCOMPARE(lap.channel(u"a"_s)->unit(), u"km"_s);
        QCOMPARE(lap.channel(u"b"_s)->unit(), u"mi"_s);
        Sample text; // what cannot be converted is zero
        text.dynamicData.setValue(u"a"_s, u"text"_s, QString());
        lap.addSample(text);
        QVERIFY(sameSamples(lap, "a", {1, 2, 0}));
    }

    void copiesAndClearing()
    {
        Lap lap;
        lap.addSample(row({{"a", 1}}));
        lap.addCalculatedChannel(QSharedPointer<Channel>::create(), u"b"_s);
        lap.header().lapId = QUuid::createUuid();
        lap.header().dynamicData.setValue(u"fuel"_s, 10.0, QString());
        Lap copy;
        copy = lap;
        copy.channel(u"a"_s)->append(2.0); // the copy has the same channels, and a header of its own
        copy.header().dynamicData.setValue(u"fuel"_s, 20.0, QString());
        QVERIFY(sameSamples(lap, "a", {1.0, 2.0}));
        QCOMPARE(lap.header().dynamicData.value(u"fuel"_s).toDouble(), 10.0);

        lap.clear();
        QVERIFY(lap.isEmpty() && !lap.containsChannel(u"a"_s) && !lap.containsChannel(u"b"_s));
        QVERIFY(lap.header().dynamicData.isEmpty());
        QCOMPARE(lap.header().lapId, copy.header().lapId);
        QCOMPARE(copy.size(), 2);
    }

    void nameListsAreSorted()
    {
        const Sample sample = row({{"b", 1}, {"a", 2}, {"C", 3}});
        Lap lap;
        lap.addSample(sample);
        QCOMPARE(sample.dynamicData.valueNameList(), Names({u"C"_s, u"a"_s, u"b"_s}));
        QCOMPARE(lap.getAvailableRecordedChannels(), sample.dynamicData.valueNameList());
    }

    void valuesByName()
    {
        const QString name = u"x"_s;
        DynamicData data;
        QVERIFY(data.isEmpty() && data.asRange().begin() == data.asRange().end() && !data.value(name).isValid());
        data.setValue(name, 1.0, u"m"_s);
        data.setValue(name, 2.0, QString());
        QVERIFY(data.size() == 1 && data.value(name) == Value(2.0, u""_s) && data.value(name).unit().isNull());
        QVERIFY(data.value(name) != Value(2.0, u"m"_s) && data.value(name) != Value(1.0, QString()));
        data.setValue(name, Value());
        QVERIFY(data.containsValue(name) && !data.value(name).isValid());
        data.removeValue(u"other"_s);
        QCOMPARE(data.size(), 1);
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
        lap.removeRecordedChannel(name);
        QVERIFY(!lap.channel(name) && lap.calculatedChannel(name));
        lap.removeCalculatedChannel(name);
        QVERIFY(lap.isEmpty());
    }

    void defaults()
    {
        const LapHeader header;
        QVERIFY(!header.lapTime.isValid() && !header.dateTime.isValid());
        QVERIFY(header.lapId.isNull() && header.stintId.isNull() && header.sessionId.isNull());
        QCOMPARE(sessionName(header.session), u"Unknown session"_s);
        QVERIFY(header.lapKind == -1 && header.stintNumber == 0 && !header.completed);
        QCOMPARE(carStatusToString(header.carInfo.status), u"Not connected"_s);
        QVERIFY(header.carInfo.detailedTelemetry);
    }
};

QTEST_APPLESS_MAIN(TestLap)
#include "tst_lap.moc"
