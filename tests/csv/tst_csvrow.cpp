#include "testing.h"

#include "csv/csvrow.h"
#include "csv/csvtext.h"

#include <QtCore/QBuffer>
#include <QtCore/QRandomGenerator>

using Testing::sameSamples;

class TestCsvRow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalisation_data();
    void normalisation();
    void bothWaysAgree_data();
    void bothWaysAgree();
    void randomRows();
    void rowsOfEveryLength();
};

namespace {

std::vector<double> read(const QByteArray &row, std::size_t columns)
{
    QBuffer buffer;
    buffer.setData(row);
    buffer.open(QIODevice::ReadOnly);
    LineReader lines(&buffer);
    lines.next();
    std::vector<double> values(columns, -1.0);
    values.resize(Csv::readRow(lines, values));
    return values;
}

std::vector<double> readPlainly(const QByteArray &row, std::size_t columns)
{
    std::vector<double> values(columns, -1.0);
    values.resize(Csv::readRowPlainly(QString::fromUtf8(row), values));
    return values;
}

} // namespace

void TestCsvRow::normalisation_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<QString>("expected");
    const auto add = [](const char *row, const char *expected) {
        QTest::newRow(row) << QString::fromUtf8(row) << QString::fromUtf8(expected);
    };
    add("1.5,-2,3", "1.5,-2,3");
    add(R"("12","-7")", "12,-7");
    add(R"("12,5","-0,25",3)", "12.5,-0.25,3");
    add(R"("5,")", "5.");
    add(R"("1.5")", R"("1.5")");
    add(R"(1,"",2)", "1,,2");
    add(R"("""")", "");
    add(R"(x"5"y)", "x5y");
    add(R"(1,"2,"3)", "1,2.3");
    add(R"("1""2")", "12");
    add(R"("""5""")", "5");
    add(R"(",5","+5,1","1,234,567")", R"(",5","+5,1","1,234,567")");
}

void TestCsvRow::normalisation()
{
    QFETCH(QString, row);
    QFETCH(QString, expected);
    processCsvString(row);
    QCOMPARE(row, expected);
}

void TestCsvRow::bothWaysAgree_data()
{
    QTest::addColumn<QByteArray>("row");
    for (const char *row : {R"("12,345","7","-3,20")",
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
        QTest::newRow(row) << QByteArray(row);
    QTest::newRow("long quoted number") << "\"" + QByteArray(70, '1') + "," + QByteArray(30, '2') + "\",5";
    QTest::newRow("quotes over a stretch's edge")
        << "\"" + QByteArray(62, '1') + ",5\",\"" + QByteArray(61, '2') + "\",\"3,5\"";
}

void TestCsvRow::bothWaysAgree()
{
    QFETCH(QByteArray, row);
    for (std::size_t columns : {1U, 2U, 3U, 9U})
        QVERIFY(sameSamples(read(row, columns), readPlainly(row, columns)));
}

void TestCsvRow::randomRows()
{
    // Words that rows are made of, shuffled into mostly sound and sometimes broken rows.
    const QList<QByteArray> words{",",  ",",  ",", ",",   "\"",      "\"", "\"", "\"\"", "\",\"", "\",\"",    "5",
                                  "12", "-3", ".", "345", "1234567", "-",  "e5", " ",    "x",     "\xC2\xB0", "\xFF"};
    QRandomGenerator random(7);
    constexpr int rowCount = Testing::isSanitized ? 30000 : 300000;
    for (int i = 0; i < rowCount; ++i) {
        QByteArray row;
        const bool isUsual = i % 2 == 0;
        for (int n = random.bounded(1, 30); n > 0; --n) {
            if (!isUsual) {
                row += words[random.bounded(words.size())];
                continue;
            }
            const QByteArray number = QByteArray::number(random.bounded(-100000, 100000) / 100.0);
            const int form = random.bounded(5);
            row += (row.isEmpty() ? "" : ",") + (form == 0   ? number
                                                 : form == 1 ? "\"" + number + "\""
                                                 : form == 2 ? QByteArray()
                                                 : form == 3 ? QByteArray("\"\"")
                                                             : "\"" + QByteArray(number).replace('.', ',') + "\"");
        }
        const std::size_t columns = random.bounded(1U, 32U);
        if (!sameSamples(read(row, columns), readPlainly(row, columns)))
            QFAIL(row.constData());
    }
}

void TestCsvRow::rowsOfEveryLength()
{
    QByteArray row;
    for (int i = 0; i < 200; ++i) {
        row += QByteArray::number(i % 10);
        if (i % 3 == 2)
            row += ',';
        QVERIFY(sameSamples(read(row, 200), readPlainly(row, 200)));
    }
}

QTEST_APPLESS_MAIN(TestCsvRow)
#include "tst_csvrow.moc"
