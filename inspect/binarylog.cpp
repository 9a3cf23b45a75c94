#include "inspect/binarylog.h"

#include "sdk/regularfile.h"

#include <QtCore/QFloat16>
#include <QtCore/QSet>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <unordered_set>

namespace Inspect {

namespace {

constexpr qint64 minRecordDistance = 64; // records of real logs lie 116, 124 or 212 bytes apart
constexpr qint64 maxReadingsOfFile = 4;
constexpr qint64 maxFileBytes = qint64(1) << 60; // sparse files can claim more
constexpr quint16 floatType = 7;

// What a floating point record is read as. Integers and single precision are left to the library.
bool isOwnKind(const LdChannelHeader &header)
{
    return header.typeCode == floatType &&
           (header.sampleWidth == sizeof(qfloat16) || header.sampleWidth == sizeof(double));
}

bool isDecodable(const LdChannelHeader &header)
{
    LdChannelHeader one = header;
    one.sampleCount = 1;
    return isOwnKind(header) || ldSampleCount(one) == 1;
}

double storedNumber(const char *bytes, quint16 width)
{
    if (width == sizeof(double))
        return std::bit_cast<double>(qFromLittleEndian<quint64>(bytes));
    return static_cast<double>(static_cast<float>(std::bit_cast<qfloat16>(qFromLittleEndian<quint16>(bytes))));
}

} // namespace

QString BinaryRecord::kindText() const
{
    const int width = header.sampleWidth;
    switch (header.typeCode) {
    case 0:
    case 3:
    case 5:
        if (width == 2 || width == 4)
            return QStringLiteral("%1-bit integer").arg(8 * width);
        break;
    case floatType:
        if (width == 2)
            return QStringLiteral("half precision");
        if (width == 4)
            return QStringLiteral("single precision");
        if (width == 8)
            return QStringLiteral("double precision");
        break;
    default:
        break;
    }
    return QStringLiteral("type %1, %2 bytes").arg(quint16{header.typeCode}).arg(width);
}

BinaryLog::BinaryLog(const QString &path)
    : file(std::make_unique<QFile>(path))
{
    if (!KOV::SDK::openRegularFile(*file, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        const bool isTried = file->error() != QFileDevice::NoError;
        error = isTried ? file->errorString() : QStringLiteral("not a regular file");
        return;
    }
    stream.setDevice(file.get());
    LdData data = readLd(stream);
    const LdHeadBlock &block = *data.headBlock;
    headTexts = {ldText(block, &LdHeadBlock::driverText), ldText(block, &LdHeadBlock::vehicleText),
                 ldText(block, &LdHeadBlock::venueText), ldText(block, &LdHeadBlock::sessionText)};
    readRecords(block.firstHeaderOffset);
    judgeRecords(readLdChannelHeaders(stream, data));
}

void BinaryLog::readRecords(quint32 firstOffset)
{
    const qint64 maxRecords = file->size() / minRecordDistance + 1;
    std::unordered_set<quint32> seen;
    for (quint32 offset = firstOffset; offset != 0 && std::ssize(seen) < maxRecords;) {
        if (!seen.insert(offset).second) {
            circular = true;
            return;
        }
        BinaryRecord record;
        record.offset = offset;
        cutOff =
            file->size() - qint64{offset} < qint64{sizeof record.header} || !file->seek(offset) ||
            file->read(reinterpret_cast<char *>(&record.header), sizeof record.header) < qint64{sizeof record.header};
        if (cutOff)
            return;
        offset = record.header.nextHeaderOffset;
        record.name = ldText(record.header, &LdChannelHeader::name);
        record.unit = ldText(record.header, &LdChannelHeader::unit);
        allRecords.push_back(std::move(record));
    }
}

// What the import makes of each record, told by the library's own list of them.
void BinaryLog::judgeRecords(const std::vector<LdChannelHeader> &listed)
{
    auto next = listed.begin();
    QSet<QString> names;
    qint64 budget = std::min(file->size(), maxFileBytes) * maxReadingsOfFile;
    for (BinaryRecord &record : allRecords) {
        const LdChannelHeader &header = record.header;
        const bool isListed = next != listed.end() && std::memcmp(&*next, &header, sizeof header) == 0;
        if (isListed)
            ++next;
        const QString name = record.name.toLower();
        record.passedOver = !isListed && header.sampleRate == 0 ? PassedOver::NoRate
                            : !isListed                         ? PassedOver::TypeCode
                            : !isDecodable(header)              ? PassedOver::SampleWidth
                            : header.sampleCount == 0           ? PassedOver::NoSamples
                            : names.contains(name)              ? PassedOver::SameName
                                                                : PassedOver::No;
        if (record.passedOver == PassedOver::No)
            names.insert(name);
        if (!isDecodable(header))
            continue;
        const qint64 width = header.sampleWidth;
        const qint64 room = std::max<qint64>(file->size() - qint64{header.dataOffset}, 0) / width;
        record.samplesInFile = std::min(qint64{header.sampleCount}, room);
        if (record.samplesInFile * width <= budget) {
            budget -= record.samplesInFile * width;
            record.readableSamples = record.samplesInFile;
        }
    }
}

std::vector<float> BinaryLog::samples(const BinaryRecord &record)
{
    if (record.readableSamples == 0)
        return {};
    LdChannelHeader header = record.header;
    header.sampleCount = static_cast<quint32>(record.readableSamples);
    if (!isOwnKind(header))
        return readLdChannel(stream, header);

    QByteArray bytes(static_cast<qsizetype>(record.readableSamples * header.sampleWidth), '\0');
    if (!file->seek(header.dataOffset) || file->read(bytes.data(), bytes.size()) < bytes.size())
        return {};
    const double power = std::pow(10.0, -header.decimals);
    std::vector<float> samples(static_cast<std::size_t>(record.readableSamples));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double raw = storedNumber(bytes.constData() + i * header.sampleWidth, header.sampleWidth);
        const double scaled =
            std::fma(raw / static_cast<double>(header.scale), power, static_cast<double>(header.shift));
        samples[i] = static_cast<float>(scaled * static_cast<double>(header.multiplier));
    }
    return samples;
}

} // namespace Inspect
