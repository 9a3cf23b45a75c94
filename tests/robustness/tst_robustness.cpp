// Damaged and hostile files: cut off, not regular, or made to cost more than they should (docs/limits.md).

#include "../ld/ldwriter.h"
#include "csv/linereader.h"
#include "csv/orvareader.h"
#include "ld/ldx.h"
#include "ld/loadlaps.h"
#include "testing.h"

#include <QtCore/QBuffer>

#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Testing;
using KOV::SDK::Session;

namespace {

constexpr qint64 mebibyte = 1 << 20;

Laps importCsv(const QString &path)
{
    return ORVAReader(nullptr).importLaps(path);
}

/// Limits the process to @p bytes more than it has now, or removes the limit. An allocation beyond it ends the test.
void limitMemory(std::optional<qint64> bytes)
{
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    QFile statm(u"/proc/self/statm"_s);
    if (!isMemoryOurs || !statm.open(QIODevice::ReadOnly))
        return;
    const qint64 pages = statm.readAll().split(' ').constFirst().toLongLong();
    limit.rlim_cur = bytes ? static_cast<rlim_t>(pages * sysconf(_SC_PAGESIZE) + *bytes) : limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
}

const QByteArray smallCsv = "Venue,Ring\nDriver,J\xC3\xB6rg\n\nLap Dist Pct,Speed\n%,\"km/h\"\n\n" +
                            "\"0\",1.5\r\n\"90\",2.5\r\n"_ba.repeated(2);
const QByteArray smallLd = LdWriter::log({LdWriter::channel("LapDistPct", {0, 30, 60, 90, 20, 50, 80}, "%"),
                                          LdWriter::channel("Lap", {0, 0, 0, 0, 1, 1, 1})});

/// A file on a medium with a fault: it has the size of @p bytes, but reading ends at byte @p faultAt.
class FaultyDevice : public QBuffer
{
public:
    FaultyDevice(const QByteArray &bytes, qint64 faultAt)
        : faultAt(faultAt)
    {
        setData(bytes);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 wanted) override
    {
        return pos() < faultAt ? QBuffer::readData(data, std::min(wanted, faultAt - pos())) : -1;
    }

private:
    qint64 faultAt;
};

QStringList linesOf(QIODevice &device)
{
    QStringList texts;
    for (Csv::LineReader lines(&device); lines.next();)
        texts += lines.text();
    return texts;
}

/// Many times a number between two texts.
QByteArray numbered(const char *before, int count, const char *after)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += before + QByteArray::number(i) + after;
    return text;
}

} // namespace

class TestRobustness : public QObject
{
    Q_OBJECT

    Files files;

private Q_SLOTS:
    void cleanup() { limitMemory({}); }

    void cutAtEveryByte()
    {
        const std::pair<QByteArray, Laps (*)(const QString &)> logs[]{{smallCsv, importCsv}, {smallLd, loadLaps}};
        for (const auto &[log, import] : logs) {
            for (qsizetype length = 0; length <= log.size(); ++length)
                QVERIFY(areSound(import(files.write(u"cut"_s, log.first(length)))));
            QCOMPARE(import(files.path(u"cut"_s)).size(), 2);
        }
        const QByteArray sidecar =
            "<a><b Id='Event' Value='Race'/><c Id='d' Value='1' Unit=''/><e Id='f' Value='&lt;'/></a>";
        for (qsizetype length = 0; length <= sidecar.size(); ++length) {
            const QByteArray read = sidecar.first(length);
            const QString path = files.write(u"cut.ldx"_s, read);
            QCOMPARE(loadSession(path) == Session::Race, read.contains("Race'/>"));
            QCOMPARE(loadValues(path).size(), read.count("Unit=''/>") + read.count(";'/>"));
        }
    }

    void noRegularFile()
    {
        const QString pipe = files.path(u"pipe"_s);
        mkfifo(QFile::encodeName(pipe).constData(), 0600);
        const QString log = files.write(u"beside.csv"_s, smallCsv);
        const QString sidecar = files.path(u"beside.ldx"_s);
        for (const QString &path :
             {files.path(u"."_s), u"/dev/zero"_s, u"/dev/null"_s, pipe, files.path(u"missing"_s)}) {
            QVERIFY(importCsv(path).isEmpty() && loadLaps(path).isEmpty());
            QVERIFY(loadValues(path).isEmpty() && loadSession(path) == Session::UnknownSession);
            // In a sidecar's place it does not keep the log from being read.
            QVERIFY(QFile::link(path, sidecar));
            QCOMPARE(importCsv(log).size(), 2);
            QVERIFY(QFile::remove(sidecar));
        }
        // A regular file whose reading fails: nothing lies at the start of a process's memory.
        const QString memory = u"/proc/self/mem"_s;
        QVERIFY(importCsv(memory).size() == 1 && loadLaps(memory).isEmpty() && loadValues(memory).isEmpty());
    }

    // A text ends at a read error; a channel of a binary log keeps its length.
    void readError()
    {
        for (qsizetype faultAt = 0; faultAt <= smallCsv.size(); ++faultAt) {
            FaultyDevice faulty(smallCsv, faultAt);
            QBuffer shorter;
            shorter.setData(smallCsv.first(faultAt));
            shorter.open(QIODevice::ReadOnly);
            QCOMPARE(linesOf(faulty), linesOf(shorter));
        }
        std::size_t channelCount = 0;
        for (qsizetype faultAt = 0; faultAt <= smallLd.size(); ++faultAt) {
            FaultyDevice faulty(smallLd, faultAt);
            QDataStream stream(&faulty);
            LdData data = readLd(stream);
            const auto channels = readLdChannels(stream, readLdChannelHeaders(stream, data));
            for (const auto &samples : channels)
                QCOMPARE(samples.size(), 7U);
            channelCount = channels.size();
        }
        QCOMPARE(channelCount, 2U);
    }

    // Readers must rely on what they read, not on sizes that they were told before.
    void growsAndShrinks()
    {
        QFile log(files.write(u"log.ld"_s, smallLd));
        QVERIFY(log.open(QIODevice::ReadWrite));
        QDataStream stream(&log);
        LdData data = readLd(stream);
        const auto headers = readLdChannelHeaders(stream, data);
        for (const qint64 size : {qint64{1800}, mebibyte, qint64{smallLd.size()} - 3}) {
            QVERIFY(log.resize(size));
            const auto channels = readLdChannels(stream, headers);
            QVERIFY(channels.size() == 2 && channels[0].size() == 7 && channels[1].size() == 7);
        }
        QFile text(files.write(u"log.csv"_s, "12345\n"_ba.repeated(mebibyte)));
        QVERIFY(text.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        Csv::LineReader lines(&text);
        qsizetype count = 0;
        for (const qint64 size : {qint64{4096}, mebibyte}) { // the second time with NULs after them
            QVERIFY(lines.next() == (count == 0) && text.resize(size));
            while (lines.next())
                ++count;
            QVERIFY(count > 1 && count < mebibyte);
        }
    }

    // Longest lines, many columns, many laps, much padding: each with the memory that its kind may take.
    void costOfText_data()
    {
        const Table<QByteArray, int, int, int> row("text", "lapCount", "mebibytes", "bytesPerByte");
        constexpr int base = 32;
        const QByteArray preamble = "\nLap Dist Pct,x\n,\n\n";
        const QByteArray commas(100 * mebibyte, ',');
        row("header line of 100 MiB", commas + '\n' + preamble, 1, base, 8);
        row("header text of 100 MiB", "Venue," + QByteArray(commas.size(), 'x') + '\n' + preamble, 1, base, 8);
        row("header line of 50 MiB in UTF-16", "\xFF\xFE" + "x\0"_ba.repeated(25 * mebibyte), 1, base, 8);
        row("column row of 8 MiB of commas", '\n' + commas.first(8 * mebibyte), 1, base, 8);
        row("data row of 100 MiB of commas", preamble + commas, 1, base, 3);
        row("data row of 32 MiB of digits", preamble + QByteArray(32 * mebibyte, '1'), 1, base, 8);
        row("data row of quotes", preamble + QByteArray(9 * mebibyte + 1, '"'), 1, base, 8);
        const QByteArray digits = '"' + QByteArray(4600, '1') + "x,";
        row("runs of digits after a quote", preamble + digits.repeated(1000), 1, base, 8);
        row("empty rows", preamble + QByteArray(10 * mebibyte, '\n'), 1, base, 0);
        row("rows of one, two and three fields", preamble + "9,1\n9\n9,1,2\n"_ba.repeated(100000), 1, base, 8);

        const QByteArray columns = "\nLap Dist Pct" + numbered(",c", 100000, "") + "\n\n\n";
        constexpr int forColumns = base + 50; // half a KiB each
        const QByteArray wideRow = commas.first(100000) + '\n';
        row("100,000 columns", columns + wideRow.repeated(10), 1, forColumns, 8);
        // Padding takes 512 MiB and 32 bytes per byte, both twice: a channel's room doubles.
        row("short rows after a wide one", columns + wideRow + "1\n"_ba.repeated(1000000), 1, forColumns + 1024, 64);
        row("100,000 laps", preamble + "90,1\n0,2\n"_ba.repeated(100000), 100001, base + 100, 8); // of two channels
    }
    void costOfText()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, mebibytes);
        QFETCH(int, bytesPerByte);
        const QString path = files.write(u"cost.csv"_s, text);
        text.clear();
        limitMemory(mebibytes * mebibyte + bytesPerByte * QFile(path).size());
        QTEST(static_cast<int>(importCsv(path).size()), "lapCount");
    }

    // A file whose size claims much: room for its rows or its last line must not follow that size.
    void costOfSparseText()
    {
        QFile file(files.write(u"sparse.csv"_s, "\nLap Dist Pct\n\n\n1\n2\n"));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.resize(qint64{64} << 30));
        limitMemory(2048 * mebibyte);
        const Laps laps = importCsv(file.fileName());
        QVERIFY(laps.size() == 1 && laps[0]->size() == 2);
    }

    void farColumns()
    {
        const QByteArray commas(1 << 20, ',');
        const QByteArray text = "\nLap Dist Pct" + commas.first(commas.size() - 1) + "a," + "b\n\n\n1" + commas + "2\n";
        const Laps laps = importCsv(files.write(u"far.csv"_s, text));
        QCOMPARE(laps[0]->getAvailableRecordedChannels(), QStringList({{}, u"a"_s, u"lapdistpct"_s}));
    }

    void costOfSidecar_data()
    {
        const Table<QByteArray, bool> row("sidecar", "hasValues");
        constexpr qsizetype length = 64 * mebibyte;
        QByteArray laughs = "<!DOCTYPE a [<!ENTITY l0 'lol'>";
        for (int i = 1; i < 12; ++i)
            laughs += "<!ENTITY l%1 '%2'>"_ba.replace("%1", QByteArray::number(i))
                          .replace("%2", ("&l" + QByteArray::number(i - 1) + ';').repeated(10));
        row("entities of entities", laughs + "]><a Id='&l11;'>&l11;</a>", false);
        row("deep nesting", "<a>"_ba.repeated(length / 3), false);
        row("deep nesting of name spaces", "<a xmlns:b=\"c\">"_ba.repeated(length / 15), false);
        row("long comment", "<a><!--" + QByteArray(length, '-'), false);
        row("long text", "<a Id='x'>" + QByteArray(length, 'x'), true);
        row("long attribute", "<a Id=\"" + QByteArray(length, 'x') + "\"/>", false);
        row("attributes", "<a" + numbered(" a", 1000000, "=''") + "/>", false);
        row("items", "<a>" + numbered("<i Id='", 1000000, "' Unit=''/>") + "</a>", true);
    }
    void costOfSidecar()
    {
        QFETCH(QByteArray, sidecar);
        const QString path = files.write(u"cost.ldx"_s, sidecar);
        const QString log = files.write(u"cost.csv"_s, "\nLap Dist Pct\n\n\n" + QByteArray("99\n0\n").repeated(100000));
        sidecar.clear();
        limitMemory(768 * mebibyte); // of which 512 for the values of the laps
        QCOMPARE(loadSession(path), Session::UnknownSession);
        QTEST(!loadValues(path).isEmpty(), "hasValues");
        QVERIFY(!importCsv(log).isEmpty());
        QVERIFY(QFile::remove(path));
    }

    void costOfSparseLog()
    {
        QByteArray log = smallLd;
        for (const quint32 offset : {0xFFFFFFFFU, 0xFFFFFFF0U, 0x80000000U}) {
            LdWriter::put(log, qsizetype{sizeof(LdHeadBlock)} + 8, LdInteger<quint32>(offset));
            LdWriter::put(log, qsizetype{sizeof(LdHeadBlock)} + 124 + 4, LdInteger<quint32>(offset));
            QFile file(files.write(u"sparse.ld"_s, log));
            QVERIFY(file.open(QIODevice::ReadWrite) && file.resize(qint64{5} << 30));
            QVERIFY(file.seek(offset) && file.write("\x19\0", 2) == 2 && file.flush());
            limitMemory(64 * mebibyte);
            const Laps laps = loadLaps(file.fileName());
            QCOMPARE(laps.size(), 2);
            QVERIFY(sameSamples(*laps[0], "lapdistpct", {25, 0, 0, 0}));
            QCOMPARE(laps[0]->channel(u"lapdistpct"_s)->unit(), u"%"_s); // as its name is written otherwise
        }
    }
};

QTEST_APPLESS_MAIN(TestRobustness)
#include "tst_robustness.moc"
