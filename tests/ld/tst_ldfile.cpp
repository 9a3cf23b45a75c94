#include "ldwriter.h"
#include "testing.h"

#include "ld/fusedloops.h"

#include <QtCore/QBuffer>

#include <cmath>
#include <limits>
#include <random>

using LdWriter::put;
using LdWriter::record;

namespace {

using Floats = std::vector<float>;

constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();

// By bits; any NaN equals any other.
bool same(const Floats &actual, const Floats &expected)
{
    return std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(), [](float a, float b) {
        return std::bit_cast<quint32>(a) == std::bit_cast<quint32>(b) || (std::isnan(a) && std::isnan(b));
    });
}

LdChannelHeader typed(quint16 typeCode, quint16 width, quint32 count = 0, quint16 rate = 60)
{
    LdChannelHeader header = record("x", {}, rate);
    header.typeCode = typeCode;
    header.sampleWidth = width;
    header.sampleCount = count;
    return header;
}

Floats readChannel(const QByteArray &file, const LdChannelHeader &header)
{
    QDataStream stream(file);
    return readLdChannel(stream, header);
}

std::vector<LdChannelHeader> readHeaders(const QByteArray &file)
{
    QDataStream stream(file);
    LdData data = readLd(stream);
    return readLdChannelHeaders(stream, data);
}

} // namespace

class TestLdFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void blockChain_data();
    void blockChain();
    void headSurvivesEveryCut();
    void recordFilter_data();
    void recordFilter();
    void listsEnd_data();
    void listsEnd();
    void writableBufferDoesNotGrow();
    void conversion_data();
    void conversion();
    void lengthIsKeptAtEveryCut();
    void longChannelCrossesBlocks();
    void allowance();
    void loopsAgree();
};

void TestLdFile::texts_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QByteArray(4, '\0') << QString();
    QTest::newRow("no width") << QByteArray() << QString();
    QTest::newRow("fills the field") << QByteArray("abcd") << QStringLiteral("abcd");
    QTest::newRow("rest behind NUL") << QByteArray("a\0bc", 4) << QStringLiteral("a");
    QTest::newRow("UTF-8") << QByteArray("\xC3\xA9 \xE2\x82\xAC\0x", 8) << QStringLiteral(u"\u00E9 \u20AC");
    QTest::newRow("bad byte") << QByteArray("a\xFF", 2) << QStringLiteral(u"a\uFFFD");
}

void TestLdFile::texts()
{
    QFETCH(QByteArray, field);
    QTEST(ldText({field.data(), static_cast<std::size_t>(field.size())}), "text");
}

void TestLdFile::blockChain_data()
{
    QTest::addColumn<int>("second");
    QTest::addColumn<int>("third");
    QTest::addColumn<int>("fourth");
    QTest::addColumn<int>("blocks");
    QTest::newRow("none") << 0 << 5000 << 7000 << 1;
    QTest::newRow("second") << 3000 << 0 << 7000 << 2;
    QTest::newRow("third") << 3000 << 5000 << 0 << 3;
    QTest::newRow("all") << 3000 << 5000 << 65535 << 4;
    QTest::newRow("beyond the end") << 100000 << 5000 << 7000 << 2;
}

void TestLdFile::blockChain()
{
    QFETCH(int, second);
    QFETCH(int, third);
    QFETCH(int, fourth);
    LdHeadBlock head;
    head.secondBlockOffset = static_cast<quint32>(second);
    head.firstHeaderOffset = 70000U;
    QByteArray file = LdWriter::bytesOf(head);
    LdSecondBlock secondBlock;
    secondBlock.thirdBlockOffset = static_cast<quint16>(third);
    put(file, 3000, secondBlock);
    LdThirdBlock thirdBlock;
    thirdBlock.fourthBlockOffset = static_cast<quint16>(fourth);
    put(file, 5000, thirdBlock);
    put(file, 65535, std::array{'4'});
    put(file, 70000, typed(3, 2));
    QDataStream stream(file);
    stream.setByteOrder(QDataStream::LittleEndian);
    LdData data = readLd(stream);
    QTEST((data.headBlock ? 1 : 0) + (data.secondBlock ? 1 : 0) + (data.thirdBlock ? 1 : 0) +
              (data.fourthBlock ? 1 : 0),
          "blocks");
    if (data.fourthBlock)
        QCOMPARE(data.fourthBlock->reserved0[0], '4');
    QCOMPARE(readLdChannelHeaders(stream, data).size(), 1U);
}

void TestLdFile::headSurvivesEveryCut()
{
    LdHeadBlock head;
    LdWriter::setText(head.driverText, "driver");
    LdWriter::setText(head.sessionText, "Race");
    const QByteArray file = LdWriter::log({LdWriter::channel("a", {1})}, head);
    for (qsizetype size = 0; size <= file.size(); ++size) {
        const QByteArray cut = file.first(size);
        QDataStream stream(cut);
        const LdData data = readLd(stream);
        QVERIFY(data.headBlock && !data.secondBlock);
        QCOMPARE(ldText(data.headBlock->driverText), QStringLiteral("driver").first(std::clamp(size - 158, 0LL, 6LL)));
        // Behind the sample rate a record is cut off without harm.
        QCOMPARE(readHeaders(cut).size(), size > 1762 + 22 ? 1U : 0U);
    }
}

void TestLdFile::recordFilter_data()
{
    QTest::addColumn<int>("typeCode");
    QTest::addColumn<int>("rate");
    QTest::addColumn<bool>("kept");
    for (int type : {0, 1, 2, 3, 4, 5, 6, 7, 8, 65535})
        QTest::addRow("type %d", type) << type << 60 << (type >= 1 && type <= 5);
    QTest::newRow("no rate") << 3 << 0 << false;
    QTest::newRow("highest rate") << 3 << 65535 << true;
}

void TestLdFile::recordFilter()
{
    QFETCH(int, typeCode);
    QFETCH(int, rate);
    QFETCH(bool, kept);
    const auto tested = typed(static_cast<quint16>(typeCode), 2, 0, static_cast<quint16>(rate));
    const auto headers = readHeaders(LdWriter::log({{record("first"), {}}, {tested, {}}, {record("last"), {}}}));
    QCOMPARE(headers.size(), kept ? 3U : 2U);
    QCOMPARE(ldText(headers.front().name), QStringLiteral("first"));
    QCOMPARE(ldText(headers.back().name), QStringLiteral("last"));
}

void TestLdFile::listsEnd_data()
{
    QTest::addColumn<QList<quint32>>("offsets"); // of record k; the last goes on to the first number of "next"
    QTest::addColumn<quint32>("next");
    QTest::addColumn<int>("records");
    using Offsets = QList<quint32>;
    QTest::newRow("none") << Offsets{} << 0U << 0;
    QTest::newRow("backwards") << Offsets{3000, 2000} << 0U << 2;
    QTest::newRow("onto itself") << Offsets{2000} << 2000U << 1;
    QTest::newRow("onto the first") << Offsets{2000, 3000, 4000} << 2000U << 3;
    QTest::newRow("onto the second") << Offsets{2000, 3000, 4000} << 3000U << 3;
    QTest::newRow("beyond the end") << Offsets{2000, 3000} << 4294967295U << 2;
    Offsets crowded;
    for (quint32 i = 0; i < 1000; ++i)
        crowded.append(2000 + 8 * i);
    QTest::newRow("more than the file has room for") << crowded << 0U << (2000 + 999 * 8 + 124) / 64 + 1;
}

void TestLdFile::listsEnd()
{
    QFETCH(QList<quint32>, offsets);
    QFETCH(quint32, next);
    LdHeadBlock head;
    head.firstHeaderOffset = offsets.value(0);
    QByteArray file = LdWriter::bytesOf(head);
    for (qsizetype i = 0; i < offsets.size(); ++i) {
        LdChannelHeader header = typed(3, 2);
        header.nextHeaderOffset = offsets.value(i + 1, next);
        put(file, offsets[i], header);
    }
    // Records 8 bytes apart lie on each other: what counts is that each is met once, whatever it reads as.
    for (qsizetype i = 0; offsets.size() > 3 && i < offsets.size(); ++i)
        put(file, offsets[i] + 4, LdInteger<quint32>(offsets.value(i + 1, next)));
    const auto headers = readHeaders(file);
    if (offsets.size() <= 3)
        QTEST(static_cast<int>(headers.size()), "records");
    else
        QVERIFY(headers.size() < 200);
}

void TestLdFile::writableBufferDoesNotGrow()
{
    LdHeadBlock head;
    head.firstHeaderOffset = 2000000U;
    head.secondBlockOffset = 3000000U;
    QBuffer buffer;
    buffer.setData(LdWriter::bytesOf(head));
    QVERIFY(buffer.open(QIODevice::ReadWrite));
    QDataStream stream(&buffer);
    LdData data = readLd(stream);
    QVERIFY(data.secondBlock && readLdChannelHeaders(stream, data).empty());
    QCOMPARE(buffer.size(), qint64{sizeof head});
    QDataStream nothing;
    QVERIFY(readLd(nothing).headBlock && readLdChannel(nothing, typed(3, 2, 2)).size() == 2);
}

void TestLdFile::conversion_data()
{
    QTest::addColumn<LdChannelHeader>("header");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Floats>("expected");
    const auto add = [](const char *name, quint16 type, quint16 width, std::array<qint16, 4> terms,
                        const QByteArray &bytes, const Floats &expected) {
        LdChannelHeader header = typed(type, width, 2);
        header.shift = terms[0];
        header.multiplier = terms[1];
        header.scale = terms[2];
        header.decimals = terms[3];
        QTest::newRow(name) << header << bytes << expected;
    };
    using LdWriter::raw;
    constexpr std::array<qint16, 4> plain{0, 1, 1, 0}; // shift, multiplier, scale, decimals
    const auto shorts = raw<qint16>({-32768, 32767});
    for (quint16 type : std::array<quint16, 3>{0, 3, 5}) {
        add("16 bits", type, 2, plain, shorts, {-32768, 32767});
        add("32 bits", type, 4, plain, raw<qint32>({-16777217, 2147483647}), {-16777216, 2147483648.0F});
        add("1 byte", type, 1, plain, shorts, {});
        add("8 bytes", type, 8, plain, shorts + shorts, {});
    }
    for (quint16 type : std::array<quint16, 5>{1, 2, 4, 6, 8})
        add("type without samples", type, 2, plain, shorts, {});
    const auto floats = raw<quint32>({std::bit_cast<quint32>(1.5F), std::bit_cast<quint32>(-0.1F)});
    add("floats", 7, 4, plain, floats, {1.5F, -0.1F});
    add("floats are converted", 7, 4, {1, 2, 2, 0}, floats, {3.5F, static_cast<float>((-0.05F + 1.0) * 2)});
    add("float of 2 bytes", 7, 2, plain, shorts, {});
    add("all terms", 3, 2, {5, 3, 2, 2}, raw<qint16>({1234, 0}), {33.5099983F, 15});
    add("decimals", 3, 2, {0, 1, 1, 1}, raw<qint16>({-300, 7}), {-30, 0.7F});
    add("negative decimals", 3, 2, {0, 1, 1, -3}, raw<qint16>({-3, 7}), {-3000, 7000});
    add("multiplier 0", 3, 2, {5, 0, 2, 2}, shorts, {-0.0F, 0});
    add("scale 0", 3, 2, {0, 1, 0, 0}, raw<qint16>({-5, 0}), {-infinity, notANumber});
    add("lowest decimals", 3, 2, {0, 1, 1, -32768}, raw<qint16>({1, 0}), {infinity, notANumber});
    add("highest decimals", 3, 2, {7, 1, 1, 32767}, raw<qint16>({1, 0}), {7, 7});
    add("past the end", 3, 2, {5, 3, 2, 2}, raw<qint16>({1234}), {33.5099983F, 15});
    add("half a sample", 3, 2, {5, 3, 2, 2}, raw<qint16>({1234}) + "x", {33.5099983F, 15});
    // Quotient in single precision, product and sum in one step: separate steps give other bits.
    add("fused", 3, 4, {-1, 1, 3, 1}, raw<qint32>({31, 29}),
        {static_cast<float>(std::fma(double{31.0F / 3.0F}, 0.1, -1.0)),
         static_cast<float>(std::fma(double{29.0F / 3.0F}, 0.1, -1.0))});
}

void TestLdFile::conversion()
{
    QFETCH(LdChannelHeader, header);
    QFETCH(QByteArray, bytes);
    QFETCH(Floats, expected);
    header.dataOffset = 3U;
    QVERIFY(same(readChannel("abc" + bytes, header), expected));
    QCOMPARE(ldSampleCount(header), qint64{expected.empty() ? 0 : 2});
    header.sampleCount = 0U;
    QVERIFY(readChannel("abc" + bytes, header).empty());
}

void TestLdFile::lengthIsKeptAtEveryCut()
{
    const QByteArray file = LdWriter::raw<qint32>({1, 2, 3, 4, 5});
    LdChannelHeader header = typed(5, 4, 5);
    header.shift = 1;
    for (qsizetype size = 0; size <= file.size(); ++size) {
        Floats expected{1, 1, 1, 1, 1};
        for (std::size_t i = 0; i < static_cast<std::size_t>(size) / 4; ++i)
            expected[i] = static_cast<float>(i + 2);
        QVERIFY(same(readChannel(file.first(size), header), expected));
    }
}

void TestLdFile::longChannelCrossesBlocks()
{
    std::vector<qint16> values(100001);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<qint16>(i * 7);
    LdChannelHeader header = typed(3, 2, 100003);
    header.dataOffset = 1U;
    Floats expected(values.begin(), values.end());
    expected.insert(expected.end(), {0, 0});
    QVERIFY(same(readChannel("x" + LdWriter::raw(values), header), expected));
}

void TestLdFile::allowance()
{
    constexpr quint32 all = 40U << 20;
    QCOMPARE(ldSampleAllowance(0), qint64{all});
    QCOMPARE(ldSampleAllowance(1 << 20), qint64{all});
    QCOMPARE(ldSampleAllowance(std::numeric_limits<qint64>::max()) / 40, std::numeric_limits<qint64>::max() / 40);
    const QByteArray file(64, '\0');
    QVERIFY(readChannel(file, typed(3, 2, all + 1)).empty());
    QVERIFY(readChannel(file, typed(3, 2, 4294967295U)).empty());
    QCOMPARE(readChannel(file, typed(3, 2, all / 4)).size(), all / 4);
    QDataStream stream(file);
    const auto channels = readLdChannels(stream, {typed(3, 2, all + 1), typed(3, 2, all / 2), typed(1, 2, 7),
                                                  typed(3, 2, all / 2 + 1), typed(5, 4, all / 2), typed(3, 2, 1)});
    const std::vector<std::size_t> sizes{0, all / 2, 0, 0, all / 2, 0};
    QCOMPARE(channels.size(), sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i)
        QCOMPARE(channels[i].size(), sizes[i]);
}

void TestLdFile::loopsAgree()
{
    std::mt19937 random(1);
    std::uniform_int_distribution<quint32> bits;
    Floats values(5001);
    for (float &value : values)
        value = std::bit_cast<float>(bits(random));
    for (const LdConversion &conversion :
         {LdConversion{1, 1, 0, 1}, LdConversion{3, 0.01, -7, 3}, LdConversion{0, 1e300, 1, -1}}) {
        Floats plain = values;
        Floats best = values;
        plainLoops().convert(plain, conversion);
        bestLoops().convert(best, conversion);
        QVERIFY(same(plain, best));
    }
    for (float ratio : {0.6F, 3.0F, 60.0F, 0.0009F}) {
        for (qint64 first : {0LL, 333LL, (1LL << 30) - 10, 1LL << 33}) {
            Floats plain(5000);
            Floats best(5000);
            plainLoops().interpolate(values, ratio, first, plain);
            bestLoops().interpolate(values, ratio, first, best);
            QVERIFY(same(plain, best));
        }
    }
}

QTEST_APPLESS_MAIN(TestLdFile)
#include "tst_ldfile.moc"
