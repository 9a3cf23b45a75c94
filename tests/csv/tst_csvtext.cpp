#include "testing.h"

#include "csv/csvtext.h"

using namespace Testing;

class TestCsvText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalisation_data()
    {
        const Table<QString> row("expected"); // of the row's name
        row("1.5,-2,3", u"1.5,-2,3"_s);
        row(R"("12","-7")", u"12,-7"_s);
        row(R"("12,5","-0,25",3)", u"12.5,-0.25,3"_s);
        row(R"("5,")", u"5."_s);
        row(R"("1.5")", uR"("1.5")"_s);
        row(R"(1,"",2)", u"1,,2"_s);
        row(R"("""")", u""_s);
        row(R"(x"5"y)", u"x5y"_s);
        row(R"(1,"2,"3)", u"1,2.3"_s);
        row(R"("1""2")", u"12"_s);
        row(R"("""5""")", u"5"_s);
        row(R"(",5","+5,1","1,234,567")", uR"(",5","+5,1","1,234,567")"_s);
    }
    void normalisation()
    {
        QString row = QString::fromUtf8(QTest::currentDataTag());
        processCsvString(row);
        QTEST(row, "expected");
    }
};

QTEST_APPLESS_MAIN(TestCsvText)
#include "tst_csvtext.moc"
