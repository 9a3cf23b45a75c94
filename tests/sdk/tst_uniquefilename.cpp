// Names for new files in a directory.

#include "sdk/sdk_utils.h"
#include "testing.h"

using namespace Qt::StringLiterals;

class TestUniqueFileName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
};

void TestUniqueFileName::names_data()
{
    QTest::addColumn<QStringList>("present"); // a name that ends in a slash is a directory's
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("expected");
    const QString wanted = u"a.csv"_s;

    QTest::newRow("nothing there") << QStringList() << wanted << u"a.csv"_s;
    QTest::newRow("taken") << QStringList{wanted} << wanted << u"a_1.csv"_s;
    QTest::newRow("taken twice") << QStringList{wanted, u"a_1.csv"_s} << wanted << u"a_2.csv"_s;
    QTest::newRow("gap") << QStringList{wanted, u"a_2.csv"_s} << wanted << u"a_1.csv"_s;
    QTest::newRow("only the number is taken") << QStringList{u"a_1.csv"_s} << wanted << wanted;
    QStringList nine{wanted};
    for (int i = 1; i <= 9; ++i)
        nine.append(u"a_%1.csv"_s.arg(i));
    QTest::newRow("tenth") << nine << wanted << u"a_10.csv"_s;
    QTest::newRow("middle part goes") << QStringList() << u"a.b.c"_s << u"a.c"_s;
    QTest::newRow("middle part goes, taken") << QStringList{u"a.c"_s} << u"a.b.c"_s << u"a_1.c"_s;
    QTest::newRow("whole name is not looked for") << QStringList{u"a.b.c"_s} << u"a.b.c"_s << u"a.c"_s;
    QTest::newRow("no dot") << QStringList() << u"a"_s << u"a."_s;
    QTest::newRow("no dot, taken") << QStringList{u"a."_s} << u"a"_s << u"a_1."_s;
    QTest::newRow("a file without a dot is not seen") << QStringList{u"a"_s} << u"a"_s << u"a."_s;
    QTest::newRow("nothing before the dot") << QStringList() << u".csv"_s << u".csv"_s;
    QTest::newRow("empty") << QStringList() << QString() << u"."_s;
    QTest::newRow("other case") << QStringList{u"A.csv"_s} << wanted << wanted;
    QTest::newRow("directory") << QStringList{u"a.csv/"_s} << wanted << wanted;
    QTest::newRow("hidden") << QStringList{u".csv"_s} << u".csv"_s << u".csv"_s;
    QTest::newRow("path in front") << QStringList{wanted} << u"/tmp/other.d/a.csv"_s << u"a_1.csv"_s;
}

void TestUniqueFileName::names()
{
    QFETCH(QStringList, present);
    QFETCH(QString, wanted);
    QFETCH(QString, expected);
    const Testing::Files files;
    for (const QString &name : present) {
        if (name.endsWith(u'/'))
            QVERIFY(QDir().mkdir(files.path(name)));
        else
            files.write(name, "x");
    }
    const QDir directory(files.path(QString()));
    QCOMPARE(KOV::SDK::generateUniqueFileName(directory, wanted), directory.absolutePath() + u'/' + expected);
    QCOMPARE(directory.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), present.size());

    const QDir missing(files.path(u"missing"_s));
    QVERIFY(KOV::SDK::generateUniqueFileName(missing, u"b.ld"_s) == missing.absolutePath() + u"/b.ld"_s);
    QVERIFY(!missing.exists());
}

QTEST_GUILESS_MAIN(TestUniqueFileName)
#include "tst_uniquefilename.moc"
