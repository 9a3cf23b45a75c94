#include "agreement.h"
#include "testing.h"

#include "csv/csvtext.h"

#include <QtCore/QRandomGenerator>

using namespace Testing;

class TestCsvRow : public QObject
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

    void bothWaysAgree_data()
    {
        const Table<QByteArray> row("text");
        for (const char *text : {R"("12,345","7","-3,20")",
                                 R"("0.001","0","1","-5.3")",
                                 R"("12,345678901","-123456789","5,")",
                                 R"("",1,"",2)",
                                 R"("""","5")",
                                 R"(1,"2,"3)",
                                 R"("1""2",3)",
                                 R"(",5","+5,1")",
                                 R"("1,234,567",8)",
                                 R"("text","a,b",3)",
                                 R"("-","-,5","--5","-5-")",
                                 R"(x"5"y,7)",
                                 R"(5",6)",
                                 R"("5)",
                                 R"(")",
                                 R"(""")",
                                 R"("""")",
                                 R"(",")",
                                 "1,,2,",
                                 ",",
                                 " 1 ,2",
                                 "1e-3,nan,inf,-",
                                 "\xC2\xA0 5,6",
                                 "1\xFF,2",
                                 R"("1"2,"3",4)",
                                 R"("1" ,"3")",
                                 R"( "1","3,5")",
                                 "\"5\xC2\xB0\",\"3,5\""})
            row(text, text);
        row("long quoted number", "\"" + QByteArray(70, '1') + "," + QByteArray(30, '2') + "\",5");
        row("quotes over a stretch's edge",
            "\"" + QByteArray(62, '1') + ",5\",\"" + QByteArray(61, '2') + "\",\"3,5\"");
    }
    void bothWaysAgree()
    {
        QFETCH(QByteArray, text);
        for (std::size_t columns : {1U, 2U, 3U, 9U})
            QVERIFY(rowsAgree(text, columns));
    }

    void randomRows()
    {
        // Words that rows are made of, shuffled into mostly sound and sometimes broken rows.
        const QList<QByteArray> words =
            ",|,|,|,|\"|\"|\"|\"\"|\",\"|\",\"|5|12|-3|.|345|1234567|-|e5| |x|\xC2\xB0|\xFF"_ba.split('|');
        QRandomGenerator random(7);
        for (int i = 0; i < 300000; ++i) {
            QByteArray row;
            for (int n = random.bounded(1, 30); n > 0; --n) {
                if (i % 2 != 0) {
                    row += words[random.bounded(words.size())];
                    continue;
                }
                const QByteArray number = QByteArray::number(random.bounded(-100000, 100000) / 100.0);
                const QByteArray withComma = QByteArray(number).replace('.', ',');
                const std::array forms{number, '"' + number + '"', QByteArray(), "\"\""_ba, '"' + withComma + '"'};
                row += (row.isEmpty() ? "" : ",") + forms[random.bounded(5U)];
            }
            if (!rowsAgree(row, random.bounded(1U, 32U)))
                QFAIL(row.constData());
        }
    }

    void rowsOfEveryLength()
    {
        QByteArray row;
        for (int i = 0; i < 200; ++i) {
            row += QByteArray::number(i % 10) + (i % 3 == 2 ? "," : "");
            QVERIFY(rowsAgree(row, 200));
        }
    }
};

QTEST_APPLESS_MAIN(TestCsvRow)
#include "tst_csvrow.moc"
