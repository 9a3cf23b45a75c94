#include "agreement.h"
#include "testing.h"

#include <QtCore/QRandomGenerator>

#include <clocale>

using namespace Testing;

class TestCsvNumber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A host may well set a locale with a decimal comma.
        for (const char *locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "nl_NL.UTF-8"}) {
            if (std::setlocale(LC_NUMERIC, locale)) // NOLINT(concurrency-mt-unsafe): no other thread yet
                return;
        }
    }

    void sameAsQt_data()
    {
        const Table<QByteArray> row("text");
        const QByteArray texts =
            "0|-0|-0.0|-0.00|00012.50|.5|-.5|5.|-5.|.|-|-.|+3|--3|1.e5|1e5|1E-05|1e|1e+|e5|1e5.5|1e22|1e23|"
            "123456789012345e22|1e-22|1e-23|1e400|-1e400|1e-400|-1e-400|4.9e-324|2.2250738585072014e-308|"
            "12345678|123456789|1234567.8|12345678.9|123456789012345|1234567890123456|9007199254740993|"
            "0.1|0.12345678901234567|999999999999999.9|1.7976931348623157e308|inf|-INF|nan|NaN|-nan|Infinity|"
            "0x10|1,5|1_0|1.5f|\"1.5\"|1 2| 1.5|1.5 |\t-7\r|1.2.3|1..2|12-3|1.-5|0000000000000000000001|"
            "0.000000000000000000000000000001|1/2|1:2|99999999|9999999.9|.0000001|1e0000005";
        for (const QByteArray &text : texts.split('|'))
            row(text, text);
        row("empty", {});
        row("NUL inside", "1\0002"_ba);
        row("400 nines", QByteArray(400, '9'));
        row("400 zeros and a one", QByteArray(400, '0') + '1');
        row("blanks and a number", QByteArray(70, ' ') + "1.5");
    }
    void sameAsQt()
    {
        QFETCH(QByteArray, text);
        QVERIFY(numbersAgree(text.toStdString()));
    }

    void randomTexts()
    {
        QRandomGenerator random(1);
        const QByteArray alphabet = "0123456789012345678901234567890123456789..--+eE ,\"x";
        for (int i = 0; i < 3000000; ++i) {
            QByteArray text;
            if (i % 3 == 0) {
                text = QByteArray::number(random.bounded(qint64(1) << random.bounded(60)));
                text.insert(random.bounded(text.size() + 1), '.');
                if (random.bounded(2) != 0)
                    text.prepend('-');
            } else if (i % 3 == 1) {
                text = QByteArray::number(std::bit_cast<double>(random.generate64()),
                                          random.bounded(2) != 0 ? 'g' : 'e', random.bounded(1, 18));
            } else {
                for (int length = random.bounded(1, 12); length > 0; --length)
                    text += alphabet[random.bounded(alphabet.size())];
            }
            if (!numbersAgree(text.toStdString()))
                QFAIL(text.constData());
        }
    }
};

QTEST_APPLESS_MAIN(TestCsvNumber)
#include "tst_csvnumber.moc"
