#include "agreement.h"
#include "testing.h"

#include <QtCore/QRandomGenerator>

using namespace Testing;

class TestLineReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sameAsTextStream_data()
    {
        const Table<QByteArray> row("content");
        row("empty", "");
        row("LF", "a\nb\n");
        row("no last ending", "a\nb");
        row("CR LF", "a\r\n\r\nb\r\n");
        row("lone CR", "a\rb\nc\r");
        row("two CR", "a\r\r\nb\r\r");
        row("CR alone", "\r");
        row("empty lines", "\n\n\na");
        row("NUL and controls", "a\0b\v\f\x1a\n\0\n"_ba);
        row("UTF-8", "\xC2\xB0\xE2\x80\xAF\xF0\x9F\x8F\x81\nx");
        row("UTF-8 line ends", "a\302\205b\342\200\250c\n");
        row("UTF-8 mark", "\357\273\277a\nb");
        row("two UTF-8 marks", "\357\273\277\357\273\277a\n\357\273\277b");
        row("part of a mark", "\xEF\xBB");
        row("bad bytes", "a\xFF\xC0\x80\xED\xA0\x80 b\n\x80\n");
        row("sequence cut by LF", "a\xE2\x82\nb\xF0\x9F\r\nc");
        row("sequence cut by the end", "a\nb\xE2\x82");
        row("sequence cut by the end, alone", "a\n\xE2\x82");
        row("sequence cut by the end behind CR", "a\nb\r\xE2\x82");
        row("CR behind a cut sequence", "a\nb\xE2\r");
        row("UTF-16 mark alone", "\xFF\xFE");
        row("lone surrogate", "\377\376a\0\0\330b\0\n\0\0\334"_ba);
        row("UTF-16 without a mark", "a\0,\0b\0\n\0"_ba);
        for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE, QStringConverter::Utf32LE,
                                    QStringConverter::Utf32BE}) {
            QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
            const QByteArray content = encoder.encode(u"a\u00B0,\U0001F3C1\r\n\n1.5,2\rx\n\uFEFFlast");
            row(QStringConverter::nameForEncoding(encoding), content);
            row(QStringConverter::nameForEncoding(encoding) + " cut"_ba, content.chopped(1));
        }
    }
    void sameAsTextStream()
    {
        QFETCH(QByteArray, content);
        for (const qint64 pieceLength : {1, 2, 3, 100})
            QVERIFY(linesAgree(content, pieceLength));
    }

    void randomBytes()
    {
        QRandomGenerator random(1);
        const QByteArray alphabet("\n\n\r\r,a1\"\xEF\xBB\xBF\xC2\xB0\xE2\x80\xF0\x9F\x80\xFF\0", 20);
        const QList<QByteArray> marks{"", "", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", "\xFF\xFE\0\0"_ba};
        for (int i = 0; i < 20000; ++i) {
            QByteArray content = marks[random.bounded(marks.size())];
            for (quint32 length = random.bounded(24U); length > 0; --length)
                content += alphabet[random.bounded(alphabet.size())];
            if (!linesAgree(content, random.bounded(1, 12)))
                QFAIL(content.toHex(' ').constData());
        }
    }

    void blocksDoNotShow()
    {
        // Lines from short to longer than several blocks, so that endings fall on every place about a block's edge.
        for (const char *ending : {"\n", "\r\n"}) {
            QByteArray content;
            for (const int length : {262142, 1, 262143, 0, 262144, 5, 1000000, 524287, 3})
                content += QByteArray(length, 'x') + ending;
            QVERIFY(linesAgree(content, content.size()));
            QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
            QVERIFY(linesAgree(encoder.encode(QString::fromLatin1(content)), content.size()));
        }
    }

    void brokenBytesAcrossBlocks()
    {
        // QTextStream loses characters where bad bytes lie across one of its blocks; one U+FFFD a byte is what is
        // right.
        for (int before = 16380; before < 16388; ++before) {
            const QByteArray content = QByteArray(before, 'x') + "\xFF\xFE\xFDy\nz";
            PieceByPiece device(content, content.size());
            LineReader lines(&device);
            QVERIFY(lines.next());
            QCOMPARE(lines.text(), QString(before, u'x') + u"\uFFFD\uFFFD\uFFFDy"_s);
            QVERIFY(lines.next() && lines.text() == u"z" && !lines.next());
        }
    }
};

QTEST_APPLESS_MAIN(TestLineReader)
#include "tst_linereader.moc"
