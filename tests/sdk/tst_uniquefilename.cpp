// Names for new files in a directory.

#include "sdk/sdk_utils.h"
#include "testing.h"

#include <array>

using KOV::SDK::generateUniqueFileName;
using namespace Testing;

class TestUniqueFileName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names()
    {
        const Files files;
        const QDir directory(files.path(QString()));
        QVERIFY(directory.mkdir(u"d.csv"_s));
        const std::array<QString, 3> steps[]{
            // what is put beside what is there, what is wanted, what is free
            {u".csv"_s, u".csv"_s, u".csv"_s},        {u"A.csv"_s, u"a.csv"_s, u"a.csv"_s},
            {u"a.csv"_s, u"a.csv"_s, u"a_1.csv"_s},   {u"a_2.csv"_s, u"/tmp/other.d/a.csv"_s, u"a_1.csv"_s},
            {u"a_1.csv"_s, u"a.csv"_s, u"a_3.csv"_s}, {u"a.b.c"_s, u"a.b.c"_s, u"a.c"_s},
            {u"a.c"_s, u"a.b.c"_s, u"a_1.c"_s},       {u"a."_s, u"a"_s, u"a_1."_s},
            {u"x"_s, u"d.csv"_s, u"d.csv"_s},         {u"y"_s, {}, u"."_s}};
        int count = 1;
        for (const auto &[put, wanted, expected] : steps) {
            files.write(put, "x");
            QCOMPARE(generateUniqueFileName(directory, wanted), directory.absolutePath() + u'/' + expected);
            QCOMPARE(directory.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), ++count);
        }
        for (int i = 3; i < 10; ++i)
            files.write(u"a_%1.csv"_s.arg(i), "x");
        QCOMPARE(QFileInfo(generateUniqueFileName(directory, u"a.csv"_s)).fileName(), u"a_10.csv"_s);

        const QDir missing(files.path(u"missing"_s));
        QCOMPARE(generateUniqueFileName(missing, u"b.ld"_s), missing.absolutePath() + u"/b.ld"_s);
        QVERIFY(!missing.exists());
        QCOMPARE(generateUniqueFileName(QDir(u"relative"_s), u"b.ld"_s), QDir::currentPath() + u"/relative/b.ld"_s);
    }
};

QTEST_GUILESS_MAIN(TestUniqueFileName)
#include "tst_uniquefilename.moc"
