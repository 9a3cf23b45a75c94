// Files that misbehave: cut off, no files at all, or made to cost more than they should (docs/limits.md).

#include "../ld/ldwriter.h"
#include "csv/linereader.h"
#include "csv/orvareader.h"
#include "ld/ldx.h"
#include "ld/loadlaps.h"
#include "testing.h"

#include <sys/resource.h>
#include <sys/stat.h>

using KOV::SDK::Lap;
using namespace Qt::StringLiterals;
using Laps = QList<QSharedPointer<Lap>>;

namespace {

constexpr qint64 mebibyte = 1 << 20;

Laps importCsv(const QString &path)
{
    return ORVAReader(nullptr).importLaps(path);
}

/// Lets the process have @p bytes more than it has now, for the life of the object. What goes beyond ends the test.
class MemoryLimit
{
public:
    explicit MemoryLimit(qint64 bytes)
    {
        getrlimit(RLIMIT_AS, &before);
        QFile statm(u"/proc/self/statm"_s);
        if (Testing::isSanitized || !statm.open(QIODevice::ReadOnly))
            return;
        const qint64 pages = statm.readAll().split(' ').constFirst().toLongLong();
        rlimit limit = before;
        limit.rlim_cur = static_cast<rlim_t>(pages * sysconf(_SC_PAGESIZE) + bytes);
        setrlimit(RLIMIT_AS, &limit);
    }
    ~MemoryLimit() { setrlimit(RLIMIT_AS, &before); }
    Q_DISABLE_COPY_MOVE(MemoryLimit)

private:
    rlimit before{};
};

/// A file on a medium with a fault: its size is that of @p bytes, but reading ends at byte @p faultAt.
class FaultyDevice : public QIODevice
{
public:
    FaultyDevice(QByteArray bytes, qint64 faultAt)
        : bytes(std::move(bytes))
        , faultAt(faultAt)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    qint64 size() const override { return bytes.size(); }

protected:
    qint64 readData(char *data, qint64 wanted) override
    {
        const qint64 count = std::min(wanted, faultAt - pos());
        if (count <= 0)
            return -1;
        std::copy_n(bytes.cbegin() + pos(), count, data);
        return count;
    }
    qint64 writeData(const char * /*data*/, qint64 /*count*/) override { return -1; }

private:
    QByteArray bytes;
    qint64 faultAt;
};

QByteArray smallCsv()
{
    QByteArray text = "Venue,Ring\nDriver,J\xC3\xB6rg\n\nLap Dist Pct,Speed\n%,\"km/h\"\n\n";
    for (int row = 0; row < 8; ++row)
        text += '"' + QByteArray::number(row % 4 * 30) + "\"," + QByteArray::number(row) + ".5\r\n";
    return text;
}

QByteArray smallLd()
{
    return LdWriter::log({LdWriter::channel("LapDistPct", {0, 30, 60, 90, 20, 50, 80}, "%"),
                          LdWriter::channel("Lap", {0, 0, 0, 0, 1, 1, 1})});
}

const QByteArray smallLdx = "<?xml version=\"1.0\"?><a><b Id=\"Event\" Value=\"Race\"/><c Id=\"Fuel\" Value=\"12.5\" "
                            "Unit=\"l\"/><!-- --><d Id=\"x\" Value=\"&lt;\"/></a>";

} // namespace

class TestRobustness : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutAtEveryByte();
    void noRegularFile_data();
    void noRegularFile();
    void growsAndShrinks();
    void readError();
    void costOfText_data();
    void costOfText();
    void costOfSparseText();
    void farColumns();
    void costOfSidecar_data();
    void costOfSidecar();
    void costOfSparseLog();

private:
    Testing::Files files;
};

void TestRobustness::cutAtEveryByte()
{
    const auto requireSound = [](const Laps &laps) {
        for (qsizetype i = 0; i < laps.size(); ++i) {
            QCOMPARE(laps[i]->header().stintLapIndex, i);
            QCOMPARE(laps[i]->header().completed, i + 1 < laps.size());
            for (const QString &name : laps[i]->getAvailableRecordedChannels())
                QCOMPARE(laps[i]->channel(name)->size(), laps[i]->size());
        }
    };
    const QByteArray csv = smallCsv();
    qsizetype laps = 0;
    for (qsizetype length = 0; length <= csv.size(); ++length) {
        const Laps read = importCsv(files.write(u"cut.csv"_s, csv.first(length)));
        requireSound(read);
        laps = read.size();
    }
    QCOMPARE(laps, 2);
    const QByteArray ld = smallLd();
    for (qsizetype length = 0; length <= ld.size(); ++length)
        requireSound(loadLaps(files.write(u"cut.ld"_s, ld.first(length))));
    QCOMPARE(loadLaps(files.path(u"cut.ld"_s)).size(), 2);
    qsizetype values = 0;
    for (qsizetype length = 0; length <= smallLdx.size(); ++length) {
        const QString path = files.write(u"cut.ldx"_s, smallLdx.first(length));
        const bool hasEvent = length >= smallLdx.indexOf("<c");
        QCOMPARE(loadSession(path) == KOV::SDK::Session::Race, hasEvent);
        QVERIFY(loadValues(path).size() >= values);
        values = loadValues(path).size();
    }
    QCOMPARE(values, 2);
}

void TestRobustness::noRegularFile_data()
{
    QTest::addColumn<QString>("path");
    const QString pipe = files.path(u"pipe"_s);
    mkfifo(QFile::encodeName(pipe).constData(), 0600);
    QTest::newRow("directory") << files.path(u"."_s);
    QTest::newRow("endless device") << u"/dev/zero"_s;
    QTest::newRow("empty device") << u"/dev/null"_s;
    QTest::newRow("pipe") << pipe;
    QTest::newRow("missing") << files.path(u"missing"_s);
}

void TestRobustness::noRegularFile()
{
    QFETCH(QString, path);
    QVERIFY(importCsv(path).isEmpty());
    QVERIFY(loadLaps(path).isEmpty());
    QCOMPARE(loadSession(path), KOV::SDK::Session::UnknownSession);
    QVERIFY(loadValues(path).isEmpty());
    // In a sidecar's place it does not keep the log from being read.
    const QString sidecar = files.path(u"beside.ldx"_s);
    QVERIFY(QFile::link(path, sidecar));
    QCOMPARE(importCsv(files.write(u"beside.csv"_s, smallCsv())).size(), 2);
    QVERIFY(QFile::remove(sidecar));
}

// The pipe stands for any device whose size changes: a reader must go by what it gets and not by what it was told.
void TestRobustness::growsAndShrinks()
{
    const QByteArray log = smallLd();
    for (const qsizetype length : {qsizetype{1800}, qsizetype{1900}, log.size() - 3}) {
        QFile file(files.write(u"shrinks.ld"_s, log));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QDataStream stream(&file);
        LdData data = readLd(stream);
        const auto headers = readLdChannelHeaders(stream, data);
        QCOMPARE(headers.size(), 2U);
        QVERIFY(file.resize(length));
        for (const auto &samples : readLdChannels(stream, headers))
            QCOMPARE(samples.size(), 7U);
        QVERIFY(file.resize(mebibyte));
        QCOMPARE(readLdChannels(stream, headers).size(), 2U);
    }

    const QByteArray row = "12345\n";
    QFile file(files.write(u"shrinks.csv"_s, row.repeated(mebibyte)));
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    LineReader lines(&file);
    QVERIFY(lines.next() && file.resize(4096));
    qsizetype count = 1;
    while (lines.next())
        ++count;
    QVERIFY(count > 1 && count < mebibyte);
    QVERIFY(file.resize(mebibyte)); // with NULs behind
    while (lines.next())
        ++count;
    QVERIFY(count < mebibyte);
}

// A read error counts as the end of a text; a channel of a binary log keeps its length.
void TestRobustness::readError()
{
    const auto linesOf = [](QIODevice *device) {
        QStringList texts;
        for (LineReader lines(device); lines.next();)
            texts += lines.text();
        return texts;
    };
    const QByteArray csv = smallCsv();
    for (qsizetype faultAt = 0; faultAt <= csv.size(); ++faultAt) {
        FaultyDevice faulty(csv, faultAt);
        FaultyDevice shorter(csv.first(faultAt), faultAt);
        QCOMPARE(linesOf(&faulty), linesOf(&shorter));
    }
    const QByteArray ld = smallLd();
    qsizetype complete = 0;
    for (qsizetype faultAt = 0; faultAt <= ld.size(); ++faultAt) {
        FaultyDevice device(ld, faultAt);
        QDataStream stream(&device);
        LdData data = readLd(stream);
        const auto channels = readLdChannels(stream, readLdChannelHeaders(stream, data));
        for (const auto &samples : channels)
            QCOMPARE(samples.size(), 7U);
        complete = std::ssize(channels);
    }
    QCOMPARE(complete, 2);
}

// Longest lines, many columns, many laps, much padding: each with the memory that its kind may take.
void TestRobustness::costOfText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qsizetype>("lapCount");
    QTest::addColumn<int>("mebibytes");
    QTest::addColumn<int>("bytesPerByte");
    constexpr int base = 32;
    constexpr qsizetype longLine = 100 * mebibyte;
    const QByteArray preamble = "\nLap Dist Pct,x\n,\n\n";
    const auto addRow = [](const char *name, const QByteArray &text, qsizetype lapCount, int fixed, int perByte) {
        QTest::newRow(name) << text << lapCount << fixed << perByte;
    };
    addRow("header line of 100 MiB", QByteArray(longLine, ',') + '\n' + preamble, 1, base, 8);
    addRow("header text of 100 MiB", "Venue," + QByteArray(longLine, 'x') + '\n' + preamble, 1, base, 8);
    addRow("header line of 50 MiB in UTF-16", "\xFF\xFE" + QByteArray("x\0", 2).repeated(longLine / 4), 1, base, 8);
    addRow("column row of 8 MiB of commas", '\n' + QByteArray(8 * mebibyte, ','), 1, base, 8);
    addRow("data row of 100 MiB of commas", preamble + QByteArray(longLine, ','), 1, base, 3);
    addRow("data row of 32 MiB of digits", preamble + QByteArray(32 * mebibyte, '1'), 1, base, 8);
    addRow("data row of quotes", preamble + QByteArray(9 * mebibyte + 1, '"'), 1, base, 8);
    addRow("runs of digits behind a quote", preamble + ("\"" + QByteArray(4600, '1') + "x,").repeated(1000), 1, base,
           8);
    addRow("empty rows", preamble + QByteArray(10 * mebibyte, '\n'), 1, base, 0);

    constexpr int columnCount = 100000;
    constexpr int forColumns = base + columnCount / 2 / 1024; // half a KiB each
    QByteArray columns = "\nLap Dist Pct";
    for (int i = 1; i < columnCount; ++i)
        columns += ",c" + QByteArray::number(i);
    columns += "\n\n\n";
    const QByteArray wideRow = QByteArray(columnCount - 1, ',') + '\n';
    addRow("100,000 columns", columns + wideRow.repeated(10), 1, forColumns, 8);
    constexpr int forPadding = 2 * 64; // and 32 for each byte, twice: a channel's room doubles
    addRow("short rows behind a wide one", columns + wideRow + QByteArray("1\n").repeated(1000000), 1,
           forColumns + forPadding, 2 * 32);
    addRow("a wide row behind short ones", columns + QByteArray("99\n").repeated(1000000) + wideRow, 2, forColumns, 16);
    addRow("rows of one, two and three fields", preamble + QByteArray("9,1\n9\n9,1,2\n").repeated(100000), 1, base, 8);
    constexpr int lapCount = 100000;
    addRow("100,000 laps", preamble + QByteArray("90,1\n0,2\n").repeated(lapCount), lapCount + 1,
           base + lapCount / 1024, 8); // of two channels each
}

void TestRobustness::costOfText()
{
    QFETCH(QByteArray, text);
    QFETCH(int, mebibytes);
    QFETCH(int, bytesPerByte);
    const QString path = files.write(u"cost.csv"_s, text);
    const qint64 size = text.size();
    text.clear();
    {
        const MemoryLimit limit(mebibytes * mebibyte + bytesPerByte * size);
        QTEST(importCsv(path).size(), "lapCount");
    }
}

// A file that claims to be long: neither its rows nor its last line may be taken at its word.
void TestRobustness::costOfSparseText()
{
    QFile file(files.write(u"sparse.csv"_s, "\nLap Dist Pct\n\n\n1\n2\n"));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.resize(qint64{64} << 30));
    {
        const MemoryLimit limit(2048 * mebibyte);
        const Laps laps = importCsv(file.fileName());
        QCOMPARE(laps.size(), 1);
        QCOMPARE(laps[0]->size(), 2);
    }
}

void TestRobustness::farColumns()
{
    const QByteArray commas(1 << 20, ',');
    const QByteArray text = "\nLap Dist Pct" + commas.first(commas.size() - 1) + "a," + "b\n\n\n1" + commas + "2\n";
    const Laps laps = importCsv(files.write(u"far.csv"_s, text));
    QCOMPARE(laps.size(), 1);
    QCOMPARE(laps[0]->getAvailableRecordedChannels(), (QStringList{QString(), u"a"_s, u"lapdistpct"_s}));
}

void TestRobustness::costOfSidecar_data()
{
    QTest::addColumn<QByteArray>("sidecar");
    QTest::addColumn<bool>("hasValues");
    constexpr qsizetype long1 = 64 * mebibyte;
    QByteArray laughs = "<!DOCTYPE a [<!ENTITY l0 \"lollollol\">";
    for (int i = 1; i < 12; ++i)
        laughs += "<!ENTITY l" + QByteArray::number(i) + " \"" + ("&l" + QByteArray::number(i - 1) + ';').repeated(10) +
                  "\">";
    QTest::newRow("entities of entities") << laughs + "]><a Id=\"&l11;\">&l11;</a>" << false;
    QTest::newRow("deep nesting") << QByteArray("<a>").repeated(long1 / 3) << false;
    QTest::newRow("deep nesting of name spaces") << QByteArray("<a xmlns:b=\"c\">").repeated(long1 / 15) << false;
    QTest::newRow("long comment") << "<a><!--" + QByteArray(long1, '-') << false;
    QTest::newRow("long text") << "<a Id='x'>" + QByteArray(long1, 'x') << true;
    QTest::newRow("long attribute") << "<a Id=\"" + QByteArray(long1, 'x') + "\"/>" << false;
    QByteArray attributes = "<a";
    for (int i = 0; i < 1000000; ++i)
        attributes += " a" + QByteArray::number(i) + "=''";
    QTest::newRow("attributes") << attributes + "/>" << false;
    QByteArray items = "<a>";
    for (int i = 0; i < 1000000; ++i)
        items += "<i Id='" + QByteArray::number(i) + "' Unit=''/>";
    QTest::newRow("items") << items + "</a>" << true;
}

void TestRobustness::costOfSidecar()
{
    QFETCH(QByteArray, sidecar);
    const QString path = files.write(u"cost.ldx"_s, sidecar);
    const QString log = files.write(u"cost.csv"_s, "\nLap Dist Pct\n\n\n" + QByteArray("99\n0\n").repeated(100000));
    sidecar.clear();
    {
        const MemoryLimit limit(384 * mebibyte);
        QCOMPARE(loadSession(path), KOV::SDK::Session::UnknownSession);
        QTEST(!loadValues(path).isEmpty(), "hasValues");
        QVERIFY(!importCsv(log).isEmpty());
    }
    QFile::remove(path);
}

void TestRobustness::costOfSparseLog()
{
    QByteArray log = smallLd();
    for (const quint32 offset : {0xFFFFFFFFU, 0xFFFFFFF0U, 0x80000000U}) {
        LdWriter::put(log, qsizetype{sizeof(LdHeadBlock)} + 8, LdInteger<quint32>(offset));
        LdWriter::put(log, qsizetype{sizeof(LdHeadBlock)} + 124 + 4, LdInteger<quint32>(offset));
        QFile file(files.write(u"sparse.ld"_s, log));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.resize(qint64{5} << 30));
        const MemoryLimit limit(64 * mebibyte);
        QCOMPARE(loadLaps(file.fileName()).size(), 2);
    }
}

QTEST_APPLESS_MAIN(TestRobustness)
#include "tst_robustness.moc"
