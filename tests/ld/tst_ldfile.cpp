#include "ldwriter.h"
#include "testing.h"

#include "ld/fusedloops.h"

#include <QtCore/QBuffer>

#include <cmath>
#include <limits>
#include <random>

using namespace Testing;
using LdWriter::put;
using LdWriter::raw;
using LdWriter::record;

namespace {

using Floats = std::vector<float>;
using Offsets = QList<quint32>;

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
    void texts_data()
    {
        const Table<QByteArray, QString> row("field", "text");
        row("empty", QByteArray(4, '\0'), {});
        row("no width", {}, {});
        row("fills the field", "abcd", u"abcd"_s);
        row("rest behind NUL", "a\0bc"_ba, u"a"_s);
        row("UTF-8", "\xC3\xA9 \xE2\x82\xAC\0x"_ba, u"\u00E9 \u20AC"_s);
        row("bad byte", "a\xFF", u"a\uFFFD"_s);
    }
    void texts()
    {
        QFETCH(QByteArray, field);
        QTEST(ldText({field.data(), static_cast<std::size_t>(field.size())}), "text");
    }

    void blockChain_data()
    {
        const Table<quint32, quint16, quint16, int> row("second", "third", "fourth", "blocks");
        row("none", 0, 5000, 7000, 1);
        row("second", 3000, 0, 7000, 2);
        row("third", 3000, 5000, 0, 3);
        row("all", 3000, 5000, 65535, 4);
        row("beyond the end", 100000, 5000, 7000, 2);
    }
    void blockChain()
    {
        QFETCH(quint32, second);
        QFETCH(quint16, third);
        QFETCH(quint16, fourth);
        LdHeadBlock head;
        head.secondBlockOffset = second;
        head.firstHeaderOffset = 70000U;
        QByteArray file = LdWriter::bytesOf(head);
        LdSecondBlock secondBlock;
        secondBlock.thirdBlockOffset = third;
        put(file, 3000, secondBlock);
        LdThirdBlock thirdBlock;
        thirdBlock.fourthBlockOffset = fourth;
        put(file, 5000, thirdBlock);
        put(file, 65535, std::array{'4'});
        put(file, 70000, typed(3, 2));
        QDataStream stream(file);
        stream.setByteOrder(QDataStream::LittleEndian);
        LdData data = readLd(stream);
        QTEST((data.headBlock ? 1 : 0) + (data.secondBlock ? 1 : 0) + (data.thirdBlock ? 1 : 0) +
                  (data.fourthBlock ? 1 : 0),
              "blocks");
        QVERIFY(!data.fourthBlock || data.fourthBlock->reserved0[0] == '4');
        QCOMPARE(readLdChannelHeaders(stream, data).size(), 1U);
    }

    void headSurvivesEveryCut()
    {
        LdHeadBlock head;
        LdWriter::setText(head.driverText, "driver");
        const QByteArray file = LdWriter::log({LdWriter::channel("a", {1})}, head);
        for (qsizetype size = 0; size <= file.size(); ++size) {
            const QByteArray cut = file.first(size);
            QDataStream stream(cut);
            const LdData data = readLd(stream);
            QVERIFY(data.headBlock && !data.secondBlock);
            QCOMPARE(ldText(data.headBlock->driverText), u"driver"_s.first(std::clamp(size - 158, 0LL, 6LL)));
            // Behind the sample rate a record is cut off without harm.
            QCOMPARE(readHeaders(cut).size(), size > 1762 + 22 ? 1U : 0U);
        }
    }

    void recordFilter()
    {
        const auto isKept = [](quint16 typeCode, quint16 rate) {
            const auto tested = typed(typeCode, 2, 0, rate);
            const auto headers =
                readHeaders(LdWriter::log({{record("first"), {}}, {tested, {}}, {record("last"), {}}}));
            return headers.size() == 3 && ldText(headers[2].name) == u"last";
        };
        for (const quint16 type : std::array<quint16, 10>{0, 1, 2, 3, 4, 5, 6, 7, 8, 65535})
            QCOMPARE(isKept(type, 60), type >= 1 && type <= 5);
        QVERIFY(!isKept(3, 0));
        QVERIFY(isKept(3, 65535));
    }

    void listsEnd_data()
    {
        const Table<Offsets, quint32, int> row("offsets", "next", "records"); // the last of the records leads to "next"
        row("none", {}, 0, 0);
        row("within the head", {1000}, 0, 1);
        row("backwards", {3000, 2000}, 0, 2);
        row("onto itself", {2000}, 2000, 1);
        row("onto the first", {2000, 3000, 4000}, 2000, 3);
        row("onto the second", {2000, 3000, 4000}, 3000, 3);
        row("beyond the end", {2000, 3000}, 4294967295U, 2);
    }
    void listsEnd()
    {
        QFETCH(Offsets, offsets);
        QFETCH(quint32, next);
        LdHeadBlock head;
        head.firstHeaderOffset = offsets.value(0);
        QByteArray file = LdWriter::bytesOf(head);
        for (qsizetype i = 0; i < offsets.size(); ++i) {
            LdChannelHeader header = typed(3, 2);
            header.nextHeaderOffset = offsets.value(i + 1, next);
            put(file, offsets[i], header);
        }
        QTEST(static_cast<int>(readHeaders(file).size()), "records");
    }

    // Records 8 bytes apart lie on each other: what counts is that there are no more than the file has room for.
    void crowdedList()
    {
        constexpr quint32 recordCount = 1000;
        LdHeadBlock head;
        head.firstHeaderOffset = 2000U;
        QByteArray file = LdWriter::bytesOf(head);
        for (quint32 i = 0; i < recordCount; ++i)
            put(file, 2000 + 8 * i, typed(3, 2));
        for (quint32 i = 0; i < recordCount; ++i)
            put(file, 2000 + 8 * i + 4, LdInteger<quint32>(2000 + 8 * (i + 1)));
        QVERIFY(readHeaders(file).size() < 200);
    }

    void writableBufferDoesNotGrow()
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

    void conversion_data()
    {
        const Table<LdChannelHeader, QByteArray, Floats> table("header", "bytes", "expected");
        // The terms are shift, multiplier, scale and decimals.
        const auto row = [&table](const char *name, quint16 type, quint16 width, std::array<qint16, 4> terms,
                                  const QByteArray &bytes, const Floats &expected) {
            LdChannelHeader header = typed(type, width, 2);
            header.shift = terms[0];
            header.multiplier = terms[1];
            header.scale = terms[2];
            header.decimals = terms[3];
            table(name, header, bytes, expected);
        };
        constexpr std::array<qint16, 4> plain{0, 1, 1, 0};
        const auto shorts = raw<qint16>({-32768, 32767});
        for (const quint16 type : std::array<quint16, 3>{0, 3, 5}) {
            row("16 bits", type, 2, plain, shorts, {-32768, 32767});
            row("32 bits", type, 4, plain, raw<qint32>({-16777217, 2147483647}), {-16777216, 2147483648.0F});
            row("1 byte", type, 1, plain, shorts, {});
            row("8 bytes", type, 8, plain, shorts + shorts, {});
        }
        for (const quint16 type : std::array<quint16, 5>{1, 2, 4, 6, 8})
            row("type without samples", type, 2, plain, shorts, {});
        const auto floats = raw<quint32>({std::bit_cast<quint32>(1.5F), std::bit_cast<quint32>(-0.1F)});
        row("floats", 7, 4, plain, floats, {1.5F, -0.1F});
        row("floats are converted", 7, 4, {1, 2, 2, 0}, floats, {3.5F, static_cast<float>((-0.05F + 1.0) * 2)});
        row("float of 2 bytes", 7, 2, plain, shorts, {});
        row("all terms", 3, 2, {5, 3, 2, 2}, raw<qint16>({1234, 0}), {33.5099983F, 15});
        row("decimals", 3, 2, {0, 1, 1, 1}, raw<qint16>({-300, 7}), {-30, 0.7F});
        row("negative decimals", 3, 2, {0, 1, 1, -3}, raw<qint16>({-3, 7}), {-3000, 7000});
        row("multiplier 0", 3, 2, {5, 0, 2, 2}, shorts, {-0.0F, 0});
        row("scale 0", 3, 2, {0, 1, 0, 0}, raw<qint16>({-5, 0}), {-infinity, notANumber});
        row("lowest decimals", 3, 2, {0, 1, 1, -32768}, raw<qint16>({1, 0}), {infinity, notANumber});
        row("highest decimals", 3, 2, {7, 1, 1, 32767}, raw<qint16>({1, 0}), {7, 7});
        row("past the end", 3, 2, {5, 3, 2, 2}, raw<qint16>({1234}), {33.5099983F, 15});
        row("half a sample", 3, 2, {5, 3, 2, 2}, raw<qint16>({1234}) + "x", {33.5099983F, 15});
        // Quotient in single precision, product and sum in one step: separate steps give other bits.
        const auto fused = [](float value) { return static_cast<float>(std::fma(double{value / 3.0F}, 0.1, -1.0)); };
        row("fused", 3, 4, {-1, 1, 3, 1}, raw<qint32>({31, 29}), {fused(31), fused(29)});
    }
    void conversion()
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

    void lengthIsKeptAtEveryCut()
    {
        const QByteArray file = raw<qint32>({1, 2, 3, 4, 5});
        LdChannelHeader header = typed(5, 4, 5);
        header.shift = 1;
        for (qsizetype size = 0; size <= file.size(); ++size) {
            Floats expected{1, 1, 1, 1, 1};
            for (std::size_t i = 0; i < static_cast<std::size_t>(size) / 4; ++i)
                expected[i] = static_cast<float>(i + 2);
            QVERIFY(same(readChannel(file.first(size), header), expected));
        }
    }

    void longChannelCrossesBlocks()
    {
        std::vector<qint16> values(100001);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<qint16>(i * 7);
        LdChannelHeader header = typed(3, 2, 100003);
        header.dataOffset = 1U;
        Floats expected(values.begin(), values.end());
        expected.insert(expected.end(), {0, 0});
        QVERIFY(same(readChannel("x" + raw(values), header), expected));
    }

    void allowance()
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
        QList<std::size_t> sizes;
        for (const Floats &samples :
             readLdChannels(stream, {typed(3, 2, all + 1), typed(3, 2, all / 2), typed(1, 2, 7),
                                     typed(3, 2, all / 2 + 1), typed(5, 4, all / 2), typed(3, 2, 1)}))
            sizes.append(samples.size());
        QCOMPARE(sizes, QList<std::size_t>({0, all / 2, 0, 0, all / 2, 0}));
    }

    void loopsAgree()
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
        for (const float ratio : {0.6F, 3.0F, 60.0F, 0.0009F}) {
            for (const qint64 first : {0LL, 333LL, (1LL << 30) - 10, 1LL << 33}) {
                Floats plain(5000);
                Floats best(5000);
                plainLoops().interpolate(values, ratio, first, plain);
                bestLoops().interpolate(values, ratio, first, best);
                QVERIFY(same(plain, best));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestLdFile)
#include "tst_ldfile.moc"
