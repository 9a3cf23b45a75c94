#include "csv/fieldgroups.h"

#include "csv/csvfield.h"
#include "csv/csvnumber.h"
#include "csv/linereader.h"
#include "sdk/processor.h"

#include <bit>

#ifdef ORVA_AVX2
#include <immintrin.h>
#endif

namespace Csv {

#ifdef ORVA_AVX2

namespace {

// Vectors of GCC and Clang: operators work on each element, and comparisons set all bits of those where they hold.
using Words = quint64 __attribute__((vector_size(32))); // of four fields, one each
using Bytes = quint8 __attribute__((vector_size(32)));
using Doubles = double __attribute__((vector_size(32)));

constexpr quint64 block = 64; // bytes that are searched at once, a bit each
constexpr quint64 highestBit = quint64(1) << 63;

static_assert(block <= LineReader::slack && sizeof(quint64) + 1 <= LineReader::slack);

ORVA_AVX2 inline __m256i vector(Words words)
{
    return reinterpret_cast<__m256i>(words);
}

ORVA_AVX2 inline Words words(__m256i vector)
{
    return reinterpret_cast<Words>(vector);
}

ORVA_AVX2 inline Words everyWord(quint64 word)
{
    return Words{} + word;
}

ORVA_AVX2 inline Words bytesThatAre(Words words, char c)
{
    return reinterpret_cast<Words>(reinterpret_cast<Bytes>(words) == static_cast<quint8>(c));
}

ORVA_AVX2 inline Words areZero(Words words)
{
    return reinterpret_cast<Words>(words == 0);
}

ORVA_AVX2 inline quint64 findInBlock(const char *at, char c)
{
    const auto half = [](const char *from, __m256i wanted) ORVA_AVX2 {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(from));
        return static_cast<quint32>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, wanted)));
    };
    const __m256i wanted = _mm256_set1_epi8(c);
    return half(at, wanted) | static_cast<quint64>(half(at + block / 2, wanted)) << block / 2;
}

// All bits before the lowest of @p bits; all there are if it is 0.
ORVA_AVX2 inline quint64 before(quint64 bits)
{
    return (bits & (0 - bits)) - 1;
}

// Where fields end in the block at @p at, up to what is unusual: the commas after them, and the row's end.

ORVA_AVX2 inline quint64 unquotedEnds(const char *at, const char *end)
{
    const auto left = static_cast<quint64>(end - at);
    quint64 commas = findInBlock(at, ',');
    if (left < block) {
        const quint64 rowEnd = quint64(1) << left;
        commas = (commas & (rowEnd - 1)) | rowEnd;
    }
    return commas & before(findInBlock(at, quote));
}

ORVA_AVX2 inline quint64 quotedEnds(const char *at, const char *end)
{
    const auto left = static_cast<quint64>(end - at);
    quint64 commas = findInBlock(at, ',');
    quint64 quotes = findInBlock(at, quote);
    if (left < block) {
        const quint64 rowEnd = quint64(1) << left;
        commas = (commas & (rowEnd - 1)) | rowEnd;
        quotes = (quotes & (rowEnd - 1)) | rowEnd << 1; // as if another field followed
    }
    // A comma between two quotes ends a field. Each of these commas has two quotes of its own; any other quote is
    // unusual.
    const quint64 ends = commas & quotes << 1 & quotes >> 1;
    constexpr quint64 opening = 1;
    const quint64 unusual = (quotes ^ (opening | ends << 1 | ends >> 1)) | (ends & (ends << 2 | opening << 1));
    return ends & before(unusual);
}

// Converts four texts as shortDecimalBefore does; they are the last @p lengths bytes of @p texts. Returns a bit for
// each that is not such a text and has to be read by itself.
template <bool isQuoted>
ORVA_AVX2 inline unsigned readShortDecimals(Words texts, Words lengths, double *values)
{
    constexpr char decimalSign = isQuoted ? ',' : '.';
    const Words allBytes = ~Words{};
    // A length of more than 8 shifts all bytes out.
    const Words text = words(_mm256_sllv_epi64(vector(allBytes), vector(everyWord(64) - lengths * 8)));
    const Words minus = bytesThatAre(texts, '-') & text & ~(text << 8);
    const Words signs = bytesThatAre(texts, decimalSign) & text;
    const Words firstSign = signs & (Words{} - signs); // its lowest bit
    const Words sign = (firstSign << 8) - firstSign;
    const Words beforeSign = firstSign - 1;
    const Words isInteger = areZero(firstSign);

    Words digits = (texts ^ ('0' * everyByte)) & text & ~(minus | sign);
    const Words shifted = digits & beforeSign & ~isInteger; // closes the gap of the decimal sign
    digits = (digits ^ shifted) | shifted << 8;

    // Tens, hundreds and ten thousands join pairs of digits, then pairs of those, then the two halves.
    const __m256i pairs = _mm256_maddubs_epi16(vector(digits), _mm256_set1_epi16(0x0100 + 10));
    const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x10000 + 100));
    const Words whole = words(_mm256_mul_epu32(fours, _mm256_set1_epi64x(10000))) + (words(fours) >> 32);
    // The words of 2^52 and more, as doubles, end in the bits of an integer.
    constexpr quint64 bitsOf2To52 = quint64(0x433) << 52;
    const Doubles magnitude = reinterpret_cast<Doubles>(whole | bitsOf2To52) - 0x1p52;

    // The upper halves of the powers of ten as doubles; their lower halves are 0.
    const __m256i powers = _mm256_setr_epi32(0x3FF00000, 0x40240000, 0x40590000, 0x408F4000, 0x40C38800, 0x40F86A00,
                                             0x412E8480, 0x416312D0);
    const Words afterSign = ~(sign | beforeSign);
    const __m256i decimals = _mm256_sad_epu8(vector(afterSign & everyByte), vector(Words{}));
    const Words divisor = words(_mm256_permutevar8x32_epi32(powers, decimals)) << 32;
    const Words signBit = ~areZero(minus) & highestBit;
    Doubles results = magnitude / reinterpret_cast<Doubles>(divisor | signBit);

    // Other characters than digits, too many of them, or none after the minus or the decimal sign.
    Words unusual = words(_mm256_subs_epu8(vector(digits), _mm256_set1_epi8(9))) | ((minus | sign) & highestBit) |
                    words(_mm256_cmpgt_epi64(vector(lengths), _mm256_set1_epi64x(8)));
    if constexpr (isQuoted) {
        unusual |= areZero(text & beforeSign & ~minus) & ~isInteger; // no digit before the comma
        // Within quotes, a point is not a decimal sign: such a text reads as 0.0.
        const Words isAscii = areZero(texts & text & highBits);
        const Words isText = ~areZero(bytesThatAre(texts, '.') & text) & isInteger & isAscii;
        unusual &= ~isText;
        results = reinterpret_cast<Doubles>(reinterpret_cast<Words>(results) & ~isText);
    }
    _mm256_storeu_pd(values, reinterpret_cast<__m256d>(results));
    return 0xF ^ static_cast<unsigned>(_mm256_movemask_pd(reinterpret_cast<__m256d>(areZero(unusual))));
}

// Reads the groups of a block whose fields end at @p ends, and returns the beginning of the next field or null.
template <bool isQuoted>
ORVA_AVX2 inline const char *readBlock(const char *at, const char *end, quint64 ends, std::span<double> values,
                                       std::size_t *count)
{
    constexpr int quotes = isQuoted ? 1 : 0; // on either side
    quint32 begin = 0;
    do {
        const auto nextEnd = [&ends]() ORVA_AVX2 {
            const auto place = static_cast<quint32>(std::countr_zero(ends));
            ends &= ends - 1;
            return place;
        };
        const quint32 first = nextEnd();
        const quint32 second = nextEnd();
        const quint32 third = nextEnd();
        const quint32 fourth = nextEnd();
        const auto wordBefore = [=](quint32 place)
                                    ORVA_AVX2 { return loadWord(at + place - quotes - sizeof(quint64)); };
        const Words texts{wordBefore(first), wordBefore(second), wordBefore(third), wordBefore(fourth)};
        // A byte for each of the four.
        const quint32 places = first | second << 8 | third << 16 | fourth << 24;
        const quint32 begins = (places << 8) + 0x01010100 + begin;
        const quint32 lengths = places - begins - 2 * quotes * 0x01010101;
        const Words wideLengths = words(_mm256_cvtepu8_epi64(_mm_cvtsi32_si128(static_cast<int>(lengths))));

        double *const results = values.data() + *count;
        for (unsigned left = readShortDecimals<isQuoted>(texts, wideLengths, results); left != 0; left &= left - 1) {
            const int i = std::countr_zero(left);
            if (!readField(at + (begins >> 8 * i & 0xFF), end, results + i))
                return nullptr;
        }
        *count += fieldsPerGroup;
        begin = fourth + 1;
    } while (std::popcount(ends) >= fieldsPerGroup && values.size() - *count >= fieldsPerGroup);
    return at + begin;
}

ORVA_AVX2 const char *readFieldGroups(const char *at, const char *end, std::span<double> values, std::size_t *count)
{
    while (at && at <= end && values.size() - *count >= fieldsPerGroup) {
        const bool isQuoted = *at == quote;
        const quint64 ends = isQuoted ? quotedEnds(at, end) : unquotedEnds(at, end);
        if (std::popcount(ends) < fieldsPerGroup)
            break;
        at = isQuoted ? readBlock<true>(at, end, ends, values, count) : readBlock<false>(at, end, ends, values, count);
    }
    return at;
}

} // namespace

#endif

FieldGroupReader fieldGroupReader()
{
#ifdef ORVA_AVX2
    if (KOV::SDK::runsAvx2())
        return readFieldGroups;
#endif
    return nullptr;
}

} // namespace Csv
