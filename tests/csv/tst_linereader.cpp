#include "testing.h"

#include "csv/linereader.h"

#include <QtCore/QBuffer>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTextStream>

class TestLineReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sameAsTextStream_data();
    void sameAsTextStream();
    void randomBytes();
    void blocksDoNotShow();
    void brokenBytesAcrossBlocks();
};

namespace {

QList<QString> linesOfTextStream(const QByteArray &content)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    QTextStream stream(&buffer);
    QList<QString> lines;
    while (!stream.atEnd())
        lines.append(stream.readLine());
    return lines;
}

QList<QString> linesOfReader(const QByteArray &content)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    LineReader reader(&buffer);
    QList<QString> lines;
    while (reader.next()) {
        lines.append(reader.text());
        if (const auto &bytes = reader.bytes()) {
            const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
            if (std::all_of(bytes->begin(), bytes->end(), isAscii) &&
                QString::fromLatin1(bytes->data(), static_cast<qsizetype>(bytes->size())) != lines.constLast())
                qFatal("bytes and text of a line differ");
        }
    }
    return lines;
}

// Lines that hold nothing at the very end have no effect on an import, and readers differ on whether they exist.
QList<QString> withoutEmptyTail(QList<QString> lines)
{
    while (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace

void TestLineReader::sameAsTextStream_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto add = [](const char *name, const QByteArray &content) { QTest::newRow(name) << content; };
    add("empty", "");
    add("LF", "a\nb\n");
    add("no last ending", "a\nb");
    add("CR LF", "a\r\n\r\nb\r\n");
    add("lone CR", "a\rb\nc\r");
    add("two CR", "a\r\r\nb\r\r");
    add("CR alone", "\r");
    add("empty lines", "\n\n\na");
    add("NUL and controls", QByteArray("a\0b\v\f\x1a\n\0\n", 10));
    add("UTF-8", "\xC2\xB0\xE2\x80\xAF\xF0\x9F\x8F\x81\nx");
    add("UTF-8 line ends", "a\xC2\x85"
                           "b\xE2\x80\xA8"
                           "c\n");
    add("UTF-8 mark", "\xEF\xBB\xBF"
                      "a\nb");
    add("two UTF-8 marks", "\xEF\xBB\xBF\xEF\xBB\xBF"
                           "a\n\xEF\xBB\xBF"
                           "b");
    add("part of a mark", "\xEF\xBB");
    add("bad bytes", "a\xFF\xC0\x80\xED\xA0\x80 b\n\x80\n");
    add("sequence cut by LF", "a\xE2\x82\nb\xF0\x9F\r\nc");
    add("sequence cut by the end", "a\nb\xE2\x82");
    add("sequence cut by the end, alone", "a\n\xE2\x82");
    add("sequence cut by the end behind CR", "a\nb\r\xE2\x82");
    add("CR behind a cut sequence", "a\nb\xE2\r");
    const QString text = QStringLiteral("a\u00B0,\U0001F3C1\r\n\n1.5,2\rx\n\uFEFFlast");
    for (const auto encoding :
         {QStringConverter::Utf16LE, QStringConverter::Utf16BE, QStringConverter::Utf32LE, QStringConverter::Utf32BE}) {
        QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
        const QByteArray content = encoder.encode(text);
        add(QStringConverter::nameForEncoding(encoding), content);
        add((QByteArray(QStringConverter::nameForEncoding(encoding)) + " cut").constData(), content.chopped(1));
    }
    add("UTF-16 mark alone", "\xFF\xFE");
    add("lone surrogate", QByteArray("\xFF\xFE"
                                     "a\0\x00\xD8"
                                     "b\0\n\0\x00\xDC",
                                     12));
    add("UTF-16 without a mark", QByteArray("a\0,\0b\0\n\0", 8));
}

void TestLineReader::sameAsTextStream()
{
    QFETCH(QByteArray, content);
    QCOMPARE(withoutEmptyTail(linesOfReader(content)), withoutEmptyTail(linesOfTextStream(content)));
}

void TestLineReader::randomBytes()
{
    QRandomGenerator random(1);
    const QByteArray alphabet("\n\n\r\r,a1\"\xEF\xBB\xBF\xC2\xB0\xE2\x80\xF0\x9F\x80\xFF\0", 20);
    const QList<QByteArray> marks{"", "", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", QByteArray("\xFF\xFE\0\0", 4)};
    for (int i = 0; i < 20000; ++i) {
        QByteArray content = marks[random.bounded(marks.size())];
        for (quint32 length = random.bounded(24U); length > 0; --length)
            content += alphabet[random.bounded(alphabet.size())];
        if (withoutEmptyTail(linesOfReader(content)) != withoutEmptyTail(linesOfTextStream(content)))
            QFAIL(content.toHex(' ').constData());
    }
}

void TestLineReader::blocksDoNotShow()
{
    // Lines from short to longer than several blocks, so that endings fall on every place about a block's edge.
    const QList<QByteArray> endings{"\n", "\r\n"};
    for (const QByteArray &ending : endings) {
        QByteArray content;
        QList<QString> expected;
        for (int length : {262142, 1, 262143, 0, 262144, 5, 1000000, 524287, 3}) {
            content += QByteArray(length, 'x') + ending;
            expected += QString(length, u'x');
        }
        QCOMPARE(linesOfReader(content), expected);
        QString wide = QString::fromLatin1(content);
        QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
        QCOMPARE(linesOfReader(encoder.encode(wide)), expected);
    }
}

void TestLineReader::brokenBytesAcrossBlocks()
{
    // QTextStream loses characters where bad bytes lie across one of its blocks; one U+FFFD a byte is what is right.
    for (int before = 16380; before < 16388; ++before) {
        const QByteArray content = QByteArray(before, 'x') + "\xFF\xFE\xFDy\nz";
        const QString bad(3, QChar(QChar::ReplacementCharacter));
        QCOMPARE(linesOfReader(content), QList<QString>({QString(before, u'x') + bad + u'y', QStringLiteral("z")}));
    }
}

QTEST_APPLESS_MAIN(TestLineReader)
#include "tst_linereader.moc"
