// The sidecar: which of its items count, as what, and under which names.

#include "testing.h"

#include "ld/ldx.h"

using namespace KOV::SDK;
using namespace Testing;

class TestLdx : public QObject
{
    Q_OBJECT

    Files files;

private Q_SLOTS:
    void items()
    {
        const QString path = files.write(
            u"log.ldx"_s,
            QByteArray(R"(<a><i Value='no Id'/><i Id='CarSetup_Event' Value='Race'/><i Id='Session' Value='Race'/>
            <b><i Id='CarSetup_Fuel' Value='3.5' Unit='l'/></b><i Id='Tyre' Value='3.5'/><i Id='id' id='x' Unit=''/>
            <i Id='Wing' Value='steep' Unit='deg'/><i Id='FrontCarSetup_Left' Value='1,5' Unit='m'/><i Id='CarSetup_'/>
            <i Id='twice' Value='1' Unit='m'/><i Id='twice' Value='2'/><i Id='re~turn' Value='a~b'/>
            <i Id='Event' Value='Practice' Unit=''/></a>)")
                .replace('~', '\r'));
        const QMap<QString, Value> expected{
            {u"Fuel"_s, {3.5, u"l"_s}},   {u"Tyre"_s, {u"3.5"_s, {}}},     {u"id"_s, {0.0, u""_s}},
            {u"Wing"_s, {0.0, u"deg"_s}}, {u"FrontLeft"_s, {0.0, u"m"_s}}, {u""_s, {u""_s, {}}},
            {u"twice"_s, {u"2"_s, {}}},   {u"Event"_s, {u"Race"_s, {}}},   {u"return"_s, {u"ab"_s, {}}}};
        const QMap<QString, Value> values = loadValues(path);
        QCOMPARE(values.keys(), expected.keys());
        for (auto value = values.begin(); value != values.end(); ++value) {
            QVERIFY2(*value == expected[value.key()] && value->typeId() == expected[value.key()].typeId(),
                     qPrintable(value.key()));
            QCOMPARE(value->unit().isNull(), expected[value.key()].unit().isNull());
        }
        QCOMPARE(loadSession(path), Session::Practice);
    }

    void sessions()
    {
        const std::pair<QByteArray, Session> rows[]{
            {"Race", Session::Race},          {"Offline testing", Session::TestSession}, {"Test", Session::TestSession},
            {"Qualify", Session::Qualify},    {"Practice", Session::Practice},           {"Warmup", Session::Warmup},
            {"race", Session::UnknownSession}};
        for (const auto &[word, session] : rows) {
            QCOMPARE(getSessionFromString(QString::fromUtf8(word)), session);
            // The first event ends the search, whether its word is known or not.
            const QByteArray sidecar = "<a><i Id='Event' Value='" + word + "'/><i Id='Event' Value='Warmup'/></a>";
            QCOMPARE(loadSession(files.write(u"event.ldx"_s, sidecar)), session);
        }
        QCOMPARE(loadSession(files.write(u"event.ldx"_s, "<a><i Id='Event'/></a>")), Session::UnknownSession);
    }
};

QTEST_APPLESS_MAIN(TestLdx)
#include "tst_ldx.moc"
