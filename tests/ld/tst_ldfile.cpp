// The binary log as it lies on disk: blocks, records, samples, and how many samples are plausible.

#include "ldwriter.h"
#include "testing.h"

#include "ld/fusedloops.h"
#include "ld/ldbudget.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

using namespace Testing;
using LdWriter::put;
using LdWriter::raw;

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

// The terms are shift, multiplier, scale and decimals.
LdChannelHeader typed(quint16 typeCode, quint16 width, qint64 count, std::array<qint16, 4> terms = {0, 1, 1, 0})
{
    LdChannelHeader header = LdWriter::channel("x", {}).header;
    header.typeCode = typeCode;
    header.sampleWidth = width;
    header.sampleCount = static_cast<quint32>(count);
    header.shift = terms[0];
    header.multiplier = terms[1];
    header.scale = terms[2];
    header.decimals = terms[3];
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
    void blockChain()
    {
        // The offsets of the second to fourth block, and how many blocks they come to.
        const std::array<quint32, 4> rows[]{
            {0, 0, 0, 1}, {3000, 5000, 0, 3}, {3000, 5000, 65535, 4}, {100000, 5000, 7000, 2}};
        for (const auto &[second, third, fourth, blocks] : rows) {
            QByteArray file;
            put(file, 36, LdInteger<quint32>(second));
            put(file, 3000 + 1152, LdInteger<quint32>(third));
            put(file, 5000 + 1098, LdInteger<quint32>(fourth)); // fields of 16 bits: what follows them is 0
            put(file, 65535, '4');
            QDataStream stream(&file, QIODevice::ReadWrite);
            const LdData data = readLd(stream);
            QCOMPARE(1U + (data.secondBlock ? 1 : 0) + (data.thirdBlock ? 1 : 0) + (data.fourthBlock ? 1 : 0), blocks);
            QVERIFY(!data.fourthBlock || data.fourthBlock->reserved0[0] == '4');
            QCOMPARE(file.size(), 65536); // no seek has made it longer
        }
    }

    // A text ends at the first NUL of its record, whichever field that is in, or with the record.
    void textsRunOn()
    {
        LdHeadBlock head;
        LdWriter::setText(head.driverText, QByteArray(64, 'd'));
        LdWriter::setText(head.vehicleText, "car\0x"_ba);
        LdWriter::setText(head.sessionText, QByteArray(254, 's'));
        QCOMPARE(ldText(head, &LdHeadBlock::driverText), QString(64, u'd') + u"car"_s);
        QCOMPARE(ldText(head, &LdHeadBlock::vehicleText), u"car"_s);
        QCOMPARE(ldText(head, &LdHeadBlock::venueText), QString());
        QCOMPARE(ldText(head, &LdHeadBlock::sessionText), QString(254, u's'));
        const LdChannelHeader header = LdWriter::channel(QByteArray(40, 'n'), {}, QByteArray(52, 'u')).header;
        QCOMPARE(ldText(header, &LdChannelHeader::name), QString(40, u'n') + QString(52, u'u'));
    }

    void listsEnd()
    {
        QList<quint32> crowded; // records that lie on each other: no more than the file, of 22000 bytes, has room for
        for (quint32 i = 0; i < 1000; ++i)
            crowded.append(1996 + 20 * i);
        // Where the records lie, and then where the last of them leads to.
        const std::pair<QList<quint32>, std::size_t> rows[]{{{1000, 0}, 1},
                                                            {{3000, 2000, 0}, 2},
                                                            {{2000, 2000}, 1},
                                                            {{2000, 3000, 4000, 3000}, 3},
                                                            {{2000, 3000, 4294967295}, 2},
                                                            {crowded, 22000 / 64 + 1}};
        for (const auto &[offsets, count] : rows) {
            QByteArray file;
            put(file, 8, LdInteger<quint32>(offsets[0]));
            for (qsizetype i = 0; i + 1 < offsets.size(); ++i) {
                put(file, offsets[i] + 4, LdInteger<quint32>(offsets[i + 1]));
                put(file, offsets[i] + 18, LdInteger<quint16>(3));  // type
                put(file, offsets[i] + 22, LdInteger<quint16>(60)); // rate
            }
            QCOMPARE(readHeaders(file).size(), count);
        }
    }

    void conversion_data()
    {
        const Table<LdChannelHeader, QByteArray, Floats> row("header", "bytes", "expected");
        const auto shorts = raw<qint16>({-32768, 32767});
        for (const quint16 type : std::array<quint16, 3>{0, 3, 5}) {
            row("16 bits", typed(type, 2, 2), shorts, {-32768, 32767});
            row("32 bits", typed(type, 4, 2), raw<qint32>({-16777217, 2147483647}), {-16777216, 2147483648.0F});
            row("1 byte", typed(type, 1, 2), shorts, {});
            row("8 bytes", typed(type, 8, 2), shorts + shorts, {});
        }
        for (const quint16 type : std::array<quint16, 5>{1, 2, 4, 6, 8})
            row("type without samples", typed(type, 2, 2), shorts, {});
        const auto floats = raw<quint32>({std::bit_cast<quint32>(1.5F), std::bit_cast<quint32>(-0.1F)});
        row("floats are converted", typed(7, 4, 2, {1, 2, 2, 0}), floats, {3.5F, 1.9F});
        row("float of 2 bytes", typed(7, 2, 2), shorts, {});
        row("power, not its inverse", typed(3, 2, 2, {-25000, 1, 4, -5}), raw<qint16>({1, 2}), {0, 25000});
        row("negative decimals", typed(3, 2, 2, {0, 1, 1, -3}), raw<qint16>({-3, 7}), {-3000, 7000});
        row("multiplier 0", typed(3, 2, 2, {5, 0, 2, 2}), shorts, {-0.0F, 0});
        row("scale 0", typed(3, 2, 2, {0, 1, 0, 0}), raw<qint16>({-5, 0}), {-infinity, notANumber});
        row("lowest decimals", typed(3, 2, 2, {0, 1, 1, -32768}), raw<qint16>({1, 0}), {infinity, notANumber});
        row("highest decimals", typed(3, 2, 2, {7, 1, 1, 32767}), raw<qint16>({1, 0}), {7, 7});
        row("all terms, past the end", typed(3, 2, 2, {5, 3, 2, 2}), raw<qint16>({1234}), {33.5099983F, 15});
        // Quotient in single precision, product and sum in one step: otherwise these are .0333333351F and 0.
        row("fused", typed(3, 2, 2, {-1, 1, 3, 1}), raw<qint16>({31, 30}), {.0333333015F, 5.55111512e-17F});
    }
    void conversion()
    {
        QFETCH(LdChannelHeader, header);
        QFETCH(QByteArray, bytes);
        QFETCH(Floats, expected);
        header.dataOffset = 3U;
        QVERIFY(same(readChannel("abc" + bytes, header), expected));
        QCOMPARE(ldSampleCount(header), qint64{expected.empty() ? 0 : 2});
        QCOMPARE(readHeaders(LdWriter::log({{header, {}}})).size(),
                 header.typeCode >= 1 && header.typeCode <= 5 ? 1U : 0U);
        header.sampleRate = 0;
        QVERIFY(readHeaders(LdWriter::log({{header, {}}})).empty());
    }

    // Samples that the file does not wholly hold are converted zeros, wherever it was cut off.
    void lengthIsKept()
    {
        std::vector<qint32> values(50000); // of several blocks
        std::iota(values.begin(), values.end(), 1);
        QByteArray file = "x" + raw(values);
        LdChannelHeader header = typed(5, 4, 50000, {1, 1, 1, 0});
        header.dataOffset = 1U;
        for (const qsizetype size : {0, 1, 2, 4, 5, 6, 65536, 65537, 65539, 200000, 200001}) {
            Floats expected(values.size(), 1.0F);
            for (std::size_t i = 0; 1 + 4 * (i + 1) <= static_cast<std::size_t>(size); ++i)
                expected[i] = static_cast<float>(values[i] + 1);
            QVERIFY(same(readChannel(file.first(size), header), expected));
        }
        QDataStream unreadable(&file, QIODevice::Append);
        QVERIFY(same(readLdChannel(unreadable, header), Floats(values.size(), 1.0F)));
    }

    void budget()
    {
        // The bytes of a file, and what it may take.
        const std::pair<qint64, qint64> rows[]{{0, 480 << 20},
                                               {1 << 20, 480 << 20},
                                               {(1 << 20) + 1, (480 << 20) + 768},
                                               {std::numeric_limits<qint64>::max(), (480LL << 20) + (768LL << 50)}};
        for (const auto &[fileBytes, bytes] : rows)
            QCOMPARE(Ld::Budget(fileBytes).left(), bytes);

        const QByteArray file(64, '\0');
        const qint64 all = Ld::Budget(file.size()).left() / 4;
        QVERIFY(readChannel(file, typed(3, 2, all + 1)).empty());
        QDataStream stream(file);
        QList<qint64> sizes;
        for (const Floats &samples :
             readLdChannels(stream, {typed(3, 2, all + 1), typed(3, 2, all / 2), typed(1, 2, 7),
                                     typed(3, 2, all / 2 + 1), typed(5, 4, all / 2), typed(3, 2, 1)}))
            sizes.append(std::ssize(samples));
        QCOMPARE(sizes, QList<qint64>({0, all / 2, 0, 0, all / 2, 0}));
    }

    void loopsAgree()
    {
        std::mt19937 random(1);
        Floats values(5001);
        std::generate(values.begin(), values.end(),
                      [&random] { return std::bit_cast<float>(static_cast<quint32>(random())); });
        for (const float ratio : {0.6F, 1.0000001F, 1.2F, 3.0F, 60.0F, 0.0009F}) {
            for (const qint64 first : {0LL, 333LL, (1LL << 30) - 10, 1LL << 33}) {
                Floats plain(5001);
                Floats best(5001);
                Ld::plainLoops().interpolate(values, ratio, first, plain);
                Ld::bestLoops().interpolate(values, ratio, first, best);
                QVERIFY(first <= 333 || same({best.front()}, {values.back()}));
                Ld::plainLoops().convert(plain, {ratio, 0.01, -7, 3});
                Ld::bestLoops().convert(best, {ratio, 0.01, -7, 3});
                QVERIFY(same(plain, best));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestLdFile)
#include "tst_ldfile.moc"
