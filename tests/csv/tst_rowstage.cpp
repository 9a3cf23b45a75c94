// The straight road of rows into a lap, held against the general one.

#include "csv/rowstage.h"

#include "testing.h"

#include <QtCore/QRandomGenerator>

using KOV::SDK::Lap;
using KOV::SDK::Sample;
using namespace Qt::StringLiterals;

class TestRowStage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowsAsBySample_data();
    void rowsAsBySample();
};

void TestRowStage::rowsAsBySample_data()
{
    QTest::addColumn<QString>("titles");
    QTest::addColumn<int>("narrowest");
    for (const QString &titles : {u"d"_s, u"a,b,d,c"_s, u"a,b,c"_s, u"d,a,d,a,b,a,d"_s, u"b,b,b"_s}) {
        QTest::addRow("%s", qPrintable(titles)) << titles << 1;
        QTest::addRow("%s, all complete", qPrintable(titles)) << titles << static_cast<int>(titles.count(u',') + 1);
    }
    QTest::newRow("so many that a few rows fill the stage") << u"a,b,d,"_s + u"x,y,"_s.repeated(5000) + u"d"_s << 9000;
}

void TestRowStage::rowsAsBySample()
{
    QFETCH(QString, titles);
    QFETCH(int, narrowest);
    ColumnPlan plan;
    plan.setNames(titles);
    const QString derivedName = u"d"_s;
    const auto columnCount = static_cast<int>(plan.columnCount());
    RowStage stage(&plan, derivedName);
    QRandomGenerator random(5);
    for (int lapRows : {1, 2, 200}) {
        Lap lap;
        Lap expected;
        for (int i = 0; i < lapRows; ++i) {
            const auto fieldCount = static_cast<std::size_t>(random.bounded(narrowest, columnCount + 1));
            Sample sample;
            for (std::size_t column = 0; column < fieldCount; ++column) {
                stage.row()[column] = random.generateDouble();
                sample.dynamicData.setValue(plan.name(column), stage.row()[column], QString());
            }
            const double source = stage.derivedSource(fieldCount);
            QCOMPARE(source, sample.dynamicData.value(derivedName).toDouble());
            sample.dynamicData.setValue(derivedName, 2 * source, QString());
            expected.addSample(sample);
            if (!lap.isEmpty() && fieldCount <= stage.width()) {
                stage.commit(fieldCount, 2 * source);
                continue;
            }
            stage.flush();
            lap.addSample(sample);
            stage.bind(&lap, fieldCount, lapRows);
        }
        stage.flush();
        const QList<QString> names = expected.getAvailableRecordedChannels();
        QCOMPARE(lap.getAvailableRecordedChannels(), names);
        for (const QString &name : names) {
            const auto samples = expected.channel(name)->samples();
            QVERIFY(Testing::sameSamples(lap, qPrintable(name), {samples.begin(), samples.end()}));
        }
    }
}

QTEST_APPLESS_MAIN(TestRowStage)
#include "tst_rowstage.moc"
