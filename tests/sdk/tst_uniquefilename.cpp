// Names for new files in a directory.

#include "sdk/sdk_utils.h"
#include "testing.h"

using namespace Testing;

class TestUniqueFileName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data()
    {
        // A name that ends in a slash is a directory's.
        const Table<QStringList, QString, QString> row("present", "wanted", "expected");
        const QString wanted = u"a.csv"_s;
        row("nothing there", {}, wanted, u"a.csv"_s);
        row("taken", {wanted}, wanted, u"a_1.csv"_s);
        row("taken twice", {wanted, u"a_1.csv"_s}, wanted, u"a_2.csv"_s);
        row("gap", {wanted, u"a_2.csv"_s}, wanted, u"a_1.csv"_s);
        row("only the number is taken", {u"a_1.csv"_s}, wanted, wanted);
        QStringList nine{wanted};
        for (int i = 1; i <= 9; ++i)
            nine.append(u"a_%1.csv"_s.arg(i));
        row("tenth", nine, wanted, u"a_10.csv"_s);
        row("middle part goes", {}, u"a.b.c"_s, u"a.c"_s);
        row("middle part goes, taken", {u"a.c"_s}, u"a.b.c"_s, u"a_1.c"_s);
        row("whole name is not looked for", {u"a.b.c"_s}, u"a.b.c"_s, u"a.c"_s);
        row("no dot", {}, u"a"_s, u"a."_s);
        row("no dot, taken", {u"a."_s}, u"a"_s, u"a_1."_s);
        row("a file without a dot is not seen", {u"a"_s}, u"a"_s, u"a."_s);
        row("nothing before the dot", {}, u".csv"_s, u".csv"_s);
        row("empty", {}, {}, u"."_s);
        row("other case", {u"A.csv"_s}, wanted, wanted);
        row("directory", {u"a.csv/"_s}, wanted, wanted);
        row("hidden", {u".csv"_s}, u".csv"_s, u".csv"_s);
        row("path in front", {wanted}, u"/tmp/other.d/a.csv"_s, u"a_1.csv"_s);
    }
    void names()
    {
        QFETCH(QStringList, present);
        QFETCH(QString, wanted);
        QFETCH(QString, expected);
        const Files files;
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
        QCOMPARE(KOV::SDK::generateUniqueFileName(missing, u"b.ld"_s), missing.absolutePath() + u"/b.ld"_s);
        QVERIFY(!missing.exists());
    }
};

QTEST_GUILESS_MAIN(TestUniqueFileName)
#include "tst_uniquefilename.moc"
