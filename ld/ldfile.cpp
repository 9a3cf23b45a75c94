#include "ld/ldfile.h"

#include "ld/fusedloops.h"
#include "ld/ldbudget.h"

#include <QtCore/QIODevice>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace {

constexpr std::size_t blockBytes = 65536; // small enough for a processor's second cache
constexpr qint64 minRecordDistance = 64;  // records of real logs lie 116, 124 or 212 bytes apart

constexpr quint16 firstListedType = 1;
constexpr quint16 lastListedType = 5;
constexpr quint16 floatType = 7;

qint64 sizeOf(const QDataStream &stream)
{
    return stream.device() ? stream.device()->size() : 0;
}

// Reads until buffer is full or the stream gives no more; returns the number of bytes.
std::size_t readBytes(QDataStream &stream, std::span<char> buffer)
{
    std::size_t done = 0;
    while (done < buffer.size()) {
        const auto got = stream.readRawData(buffer.data() + done, static_cast<int>(buffer.size() - done));
        if (got <= 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

// A seek past the end of a buffer that can be written to would make it grow, so no such seek is tried.
bool seekTo(QDataStream &stream, qint64 offset)
{
    return offset < sizeOf(stream) && stream.device()->seek(offset);
}

template <typename Record>
void readRecord(QDataStream &stream, Record &record)
{
    readBytes(stream, {reinterpret_cast<char *>(&record), sizeof record});
}

template <typename Record>
std::unique_ptr<Record> readBlock(QDataStream &stream, qint64 offset)
{
    auto block = std::make_unique<Record>();
    if (seekTo(stream, offset))
        readRecord(stream, *block);
    return block;
}

template <typename Stored>
void decode(const char *bytes, std::span<float> samples)
{
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(qFromLittleEndian<Stored>(bytes + i * sizeof(Stored)));
}

using Decoder = void (*)(const char *, std::span<float>);

Decoder decoderOf(const LdChannelHeader &header)
{
    switch (header.typeCode) {
    case 0:
    case 3:
    case 5:
        if (header.sampleWidth == sizeof(qint16))
            return decode<qint16>;
        return header.sampleWidth == sizeof(qint32) ? decode<qint32> : nullptr;
    case floatType:
        return header.sampleWidth == sizeof(float) ? decode<float> : nullptr;
    default:
        return nullptr;
    }
}

qint64 decodedBytes(const LdChannelHeader &header)
{
    return ldSampleCount(header) * qint64{sizeof(float)};
}

} // namespace

LdData readLd(QDataStream &stream)
{
    LdData data;
    readRecord(stream, *data.headBlock);
    if (data.headBlock->secondBlockOffset == 0)
        return data;
    data.secondBlock = readBlock<LdSecondBlock>(stream, data.headBlock->secondBlockOffset);
    if (data.secondBlock->thirdBlockOffset == 0)
        return data;
    data.thirdBlock = readBlock<LdThirdBlock>(stream, data.secondBlock->thirdBlockOffset);
    if (data.thirdBlock->fourthBlockOffset != 0)
        data.fourthBlock = readBlock<LdFourthBlock>(stream, data.thirdBlock->fourthBlockOffset);
    return data;
}

std::vector<LdChannelHeader> readLdChannelHeaders(QDataStream &stream, LdData &data)
{
    std::vector<LdChannelHeader> headers;
    if (!data.headBlock)
        return headers;
    const qint64 maxRecords = sizeOf(stream) / minRecordDistance + 1;
    std::unordered_set<quint32> seen;
    quint32 offset = data.headBlock->firstHeaderOffset;
    while (offset != 0 && std::ssize(seen) < maxRecords && seen.insert(offset).second) {
        LdChannelHeader header;
        if (seekTo(stream, offset))
            readRecord(stream, header);
        if (header.typeCode >= firstListedType && header.typeCode <= lastListedType && header.sampleRate != 0)
            headers.push_back(header);
        offset = header.nextHeaderOffset;
    }
    return headers;
}

std::vector<std::vector<float>> readLdChannels(QDataStream &stream, const std::vector<LdChannelHeader> &headers)
{
    Ld::Budget budget(sizeOf(stream));
    std::vector<std::vector<float>> channels;
    channels.reserve(headers.size());
    for (const LdChannelHeader &header : headers)
        channels.push_back(budget.take(decodedBytes(header)) ? readLdChannel(stream, header) : std::vector<float>());
    return channels;
}

std::vector<float> readLdChannel(QDataStream &stream, const LdChannelHeader &header)
{
    std::vector<float> samples;
    const qint64 count = ldSampleCount(header);
    if (count == 0 || !Ld::Budget(sizeOf(stream)).take(decodedBytes(header)))
        return samples;

    const Decoder decoder = decoderOf(header);
    const Ld::FusedLoops loops = Ld::bestLoops();
    const Ld::Conversion conversion{static_cast<float>(header.scale), std::pow(10.0, -header.decimals),
                                    static_cast<double>(header.shift), static_cast<double>(header.multiplier)};
    const auto length = static_cast<std::size_t>(count);
    const std::size_t width = header.sampleWidth;
    samples.reserve(length);
    if (seekTo(stream, header.dataOffset)) {
        std::vector<char> block(std::min(length * width, blockBytes));
        while (samples.size() < length) {
            const std::size_t done = samples.size();
            const std::size_t wanted = std::min(length - done, block.size() / width);
            const std::size_t got = readBytes(stream, std::span(block).first(wanted * width)) / width;
            // Growing block by block keeps what is written in the cache until it has been converted.
            samples.resize(done + got);
            const auto fresh = std::span(samples).subspan(done);
            decoder(block.data(), fresh);
            loops.convert(fresh, conversion);
            if (got < wanted)
                break;
        }
    }
    float missing = 0.0F;
    loops.convert({&missing, 1}, conversion);
    samples.resize(length, missing);
    return samples;
}

qint64 ldSampleCount(const LdChannelHeader &header)
{
    return decoderOf(header) ? qint64{header.sampleCount} : 0;
}
