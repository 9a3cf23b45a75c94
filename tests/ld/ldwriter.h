#pragma once

// Builds .ld logs in memory: a head, the records one after the other, then their samples.

#include "ld/ldfile.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

namespace LdWriter {

template <std::size_t Width>
void setText(std::array<char, Width> &field, QByteArrayView text)
{
    field.fill('\0');
    std::copy_n(text.data(), std::min(static_cast<std::size_t>(text.size()), Width), field.begin());
}

template <typename Record>
QByteArray bytesOf(const Record &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

/// Overwrites the bytes of @p file at @p offset, making it longer where that is needed.
template <typename Record>
void put(QByteArray &file, qsizetype offset, const Record &record)
{
    if (file.size() < offset + qsizetype{sizeof record})
        file.append(offset + qsizetype{sizeof record} - file.size(), '\0');
    std::memcpy(file.data() + offset, &record, sizeof record);
}

/// A record that converts nothing: 16-bit integers at @p rate, raw values as they are.
inline LdChannelHeader record(QByteArrayView name, QByteArrayView unit = {}, quint16 rate = 60)
{
    LdChannelHeader header;
    header.typeCode = 3;
    header.sampleWidth = 2;
    header.sampleRate = rate;
    header.multiplier = 1;
    header.scale = 1;
    setText(header.name, name);
    setText(header.unit, unit);
    return header;
}

/// Raw values as a log stores them.
template <typename Stored>
QByteArray raw(const std::vector<Stored> &values)
{
    QByteArray bytes;
    for (const Stored value : values)
        bytes += bytesOf(LdInteger<Stored>(value));
    return bytes;
}

struct Channel
{
    LdChannelHeader header;
    QByteArray samples;
};

/// 16-bit channel.
inline Channel channel(QByteArrayView name, const std::vector<qint16> &values, QByteArrayView unit = {},
                       quint16 rate = 60, qint16 decimals = 0)
{
    Channel result{record(name, unit, rate), raw(values)};
    result.header.sampleCount = static_cast<quint32>(values.size());
    result.header.decimals = decimals;
    return result;
}

/// A whole log. Offsets are set here; a sampleCount is taken as it stands in the record.
inline QByteArray log(std::vector<Channel> channels, LdHeadBlock head = {})
{
    constexpr quint32 recordBytes = sizeof(LdChannelHeader);
    const auto count = static_cast<quint32>(channels.size());
    quint32 recordOffset = sizeof head;
    quint32 dataOffset = recordOffset + count * recordBytes;
    if (count > 0)
        head.firstHeaderOffset = recordOffset;
    QByteArray records;
    QByteArray samples;
    for (quint32 i = 0; i < count; ++i) {
        LdChannelHeader &header = channels[i].header;
        recordOffset += recordBytes;
        header.nextHeaderOffset = i + 1 < count ? recordOffset : 0;
        header.dataOffset = dataOffset + static_cast<quint32>(samples.size());
        records += bytesOf(header);
        samples += channels[i].samples;
    }
    return bytesOf(head) + records + samples;
}

} // namespace LdWriter
