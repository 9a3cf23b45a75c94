#pragma once

// The .ld log as it lies on disk: its head, its channel records and their samples. From a path to laps: loadlaps.h.

#include "orva_export.h"

#include <QtCore/QDataStream>
#include <QtCore/QString>
#include <QtCore/QtEndian>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

/// A little-endian integer of a log: the bytes of the file on any host, at any address, read and written as a T.
template <typename T>
class LdInteger
{
public:
    LdInteger() = default;
    LdInteger(T value) { *this = value; }
    LdInteger &operator=(T value)
    {
        qToLittleEndian(value, bytes.data());
        return *this;
    }
    operator T() const { return qFromLittleEndian<T>(bytes.data()); }

private:
    std::array<uchar, sizeof(T)> bytes{};
};

/// The file head, at the start of a log. Texts: ldText. Reserved bytes are kept and not interpreted.
struct LdHeadBlock
{
    std::array<char, 8> reserved0{};
    LdInteger<quint32> firstHeaderOffset; ///< file offset of the first channel record; 0 where there is none
    std::array<char, 24> reserved12{};
    LdInteger<quint32> secondBlockOffset; ///< 0 where the chain ends
    std::array<char, 118> reserved40{};
    std::array<char, 64> driverText{};
    std::array<char, 128> vehicleText{};
    std::array<char, 1158> venueText{};
    std::array<char, 254> sessionText{}; ///< in the words of getSessionFromString (ldx.h)
};

struct LdSecondBlock
{
    std::array<char, 1152> reserved0{};
    LdInteger<quint16> thirdBlockOffset; ///< 0 where the chain ends
};

struct LdThirdBlock
{
    std::array<char, 1098> reserved0{};
    LdInteger<quint16> fourthBlockOffset; ///< 0 where the chain ends
};

struct LdFourthBlock
{
    std::array<char, 260> reserved0{};
};

/// What a log holds besides its channels. The single owner of its blocks: it can be moved and not copied.
struct LdData
{
    std::unique_ptr<LdHeadBlock> headBlock = std::make_unique<LdHeadBlock>(); ///< always there
    std::unique_ptr<LdSecondBlock> secondBlock;                               ///< null where the chain ends before it
    std::unique_ptr<LdThirdBlock> thirdBlock;
    std::unique_ptr<LdFourthBlock> fourthBlock;
};

/// One channel's record, byte by byte as in the file.
///
/// A raw sample becomes (raw / scale * 10^-decimals + shift) * multiplier.
struct LdChannelHeader
{
    std::array<char, 4> reserved0{};
    LdInteger<quint32> nextHeaderOffset; ///< file offset of the next record; 0 ends the list
    LdInteger<quint32> dataOffset;       ///< file offset of the first sample
    LdInteger<quint32> sampleCount;
    std::array<char, 2> reserved16{};
    LdInteger<quint16> typeCode;    ///< 0, 3 and 5 integers, 7 single-precision numbers
    LdInteger<quint16> sampleWidth; ///< bytes of a sample: 2 or 4 for integers, 4 for others
    LdInteger<quint16> sampleRate;  ///< samples per second
    LdInteger<qint16> shift;
    LdInteger<qint16> multiplier;
    LdInteger<qint16> scale;
    LdInteger<qint16> decimals;
    std::array<char, 40> name{}; ///< in the case that the log has it in
    std::array<char, 52> unit{};
};

static_assert(sizeof(LdHeadBlock) == 1762 && offsetof(LdHeadBlock, firstHeaderOffset) == 8);
static_assert(offsetof(LdHeadBlock, secondBlockOffset) == 36 && offsetof(LdHeadBlock, driverText) == 158);
static_assert(offsetof(LdHeadBlock, vehicleText) == 222 && offsetof(LdHeadBlock, venueText) == 350);
static_assert(offsetof(LdHeadBlock, sessionText) == 1508);
static_assert(sizeof(LdSecondBlock) == 1154 && offsetof(LdSecondBlock, thirdBlockOffset) == 1152);
static_assert(sizeof(LdThirdBlock) == 1100 && offsetof(LdThirdBlock, fourthBlockOffset) == 1098);
static_assert(sizeof(LdFourthBlock) == 260);
static_assert(sizeof(LdChannelHeader) == 124 && std::is_trivially_copyable_v<LdChannelHeader>);
static_assert(offsetof(LdChannelHeader, nextHeaderOffset) == 4 && offsetof(LdChannelHeader, dataOffset) == 8);
static_assert(offsetof(LdChannelHeader, sampleCount) == 12 && offsetof(LdChannelHeader, typeCode) == 18);
static_assert(offsetof(LdChannelHeader, sampleWidth) == 20 && offsetof(LdChannelHeader, sampleRate) == 22);
static_assert(offsetof(LdChannelHeader, shift) == 24 && offsetof(LdChannelHeader, multiplier) == 26);
static_assert(offsetof(LdChannelHeader, scale) == 28 && offsetof(LdChannelHeader, decimals) == 30);
static_assert(offsetof(LdChannelHeader, name) == 32 && offsetof(LdChannelHeader, unit) == 72);

// All functions here read a device that can seek (a file, a buffer) and look at no signature: whatever lies past the
// end, or cannot be read, is zero. They are re-entrant; a stream serves one thread at a time, and is left anywhere.

/// The text @p field of @p record, such as ldText(header, &LdChannelHeader::name): UTF-8 up to the first NUL or the end
/// of the record. Writers leave out the NUL of a text that fills its field, so such a text runs on into the next field.
/// Thread-safe.
template <typename Record, std::size_t Width>
QString ldText(const Record &record, std::array<char, Width> Record::*field)
{
    const auto *bytes = reinterpret_cast<const char *>(&record);
    const auto *end = bytes + sizeof record;
    const auto *text = bytes + ((record.*field).data() - bytes);
    return QString::fromUtf8(text, std::find(text, end, '\0') - text);
}

/// Reads the head at the stream's position, which must be the start of the log, and the blocks that it leads to.
ORVA_EXPORT LdData readLd(QDataStream &stream);

/// Reads the channel records in list order and keeps those with a type code of 1 to 5 and a sample rate.
///
/// The list ends at an offset of 0, at one that it has had already, and when it is longer than the file has room for
/// (one record and one more for each 64 bytes).
ORVA_EXPORT std::vector<LdChannelHeader> readLdChannelHeaders(QDataStream &stream, LdData &data);

/// Reads the samples of all @p headers: element k belongs to record k, and is empty where readLdChannel gives nothing.
///
/// All elements together are limited as one alone is: in list order, a record that declares more samples than are left
/// comes out empty and takes nothing.
ORVA_EXPORT std::vector<std::vector<float>> readLdChannels(QDataStream &stream,
                                                           const std::vector<LdChannelHeader> &headers);

/// Reads the samples of one channel, in the unit that its record names, oldest first.
///
/// There are sampleCount of them whatever the file holds: a sample that does not lie wholly in it is a converted 0. An
/// unknown pair of type code and sample width gives none, and so does a sampleCount that is implausible for the file's
/// size: 120 Mi samples for up to 1 MiB, and 192 for each further byte, are possible. Raw value and quotient are single
/// precision, the product with 10^-decimals and the sum with shift one fused step in double, the product with
/// multiplier another double, and the result is rounded to single. A scale of 0 gives infinities and NaN. Allocates the
/// result and one block of 64 KiB.
ORVA_EXPORT std::vector<float> readLdChannel(QDataStream &stream, const LdChannelHeader &header);

/// The number of samples that @p header declares; 0 if its pair of type code and sample width is unknown, so that
/// readLdChannel gives none. Thread-safe.
ORVA_EXPORT qint64 ldSampleCount(const LdChannelHeader &header);
