// Files longer than the blocks in which they are read. The fuzz target covers short ones.

#include "testing.h"

#include "csv/linereader.h"

#include <QtCore/QBuffer>

using namespace Testing;

namespace {

QStringList linesOf(QByteArray content)
{
    QBuffer buffer(&content);
    buffer.open(QIODevice::ReadOnly);
    QStringList lines;
    for (Csv::LineReader reader(&buffer); reader.next();)
        lines.append(reader.text());
    return lines;
}

} // namespace

class TestLineReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksDoNotShow()
    {
        // Lines from short to longer than several blocks, so that endings fall on every place around the end of a
        // block.
        for (const char *ending : {"\n", "\r\n"}) {
            QByteArray content;
            QStringList expected;
            for (const int length : {262142, 1, 262143, 0, 262144, 5, 1000000, 524287, 3}) {
                content += QByteArray(length, 'x') + ending;
                expected += QString(length, u'x');
            }
            QCOMPARE(linesOf(content), expected);
            QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
            QCOMPARE(linesOf(encoder.encode(QString::fromLatin1(content))), expected);
        }
        // QTextStream loses characters where invalid bytes cross its blocks; one U+FFFD per byte is right.
        for (const int before : {16381, 16382, 16383, 262141, 262142, 262143}) {
            const QString first = QString(before, u'x') + u"\uFFFD\uFFFD\uFFFDy"_s;
            QCOMPARE(linesOf(QByteArray(before, 'x') + "\xFF\xFE\xFDy\nz"), QStringList({first, u"z"_s}));
        }
    }
};

QTEST_APPLESS_MAIN(TestLineReader)
#include "tst_linereader.moc"
