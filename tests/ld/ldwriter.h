#pragma once

// Builds .ld logs in memory: a head, the records one after the other, then their samples.

#include "ld/ldfile.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <array>
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
    file.resize(std::max(file.size(), offset + qsizetype{sizeof record}), '\0');
    std::memcpy(file.data() + offset, &record, sizeof record);
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

/// A channel that converts nothing: 16-bit integers at @p rate, raw values as they are but for @p decimals.
inline Channel channel(QByteArrayView name, const std::vector<qint16> &values, QByteArrayView unit = {},
                       quint16 rate = 60, qint16 decimals = 0)
{
    LdChannelHeader header;
    header.sampleCount = static_cast<quint32>(values.size());
    header.typeCode = 3;
    header.sampleWidth = 2;
    header.sampleRate = rate;
    header.multiplier = 1;
    header.scale = 1;
    header.decimals = decimals;
    setText(header.name, name);
    setText(header.unit, unit);
    return {header, raw(values)};
}

/// A whole log. Offsets are set here; a sampleCount is taken as it stands in the record.
inline QByteArray log(const std::vector<Channel> &channels, LdHeadBlock head = {})
{
    const auto dataOffset = static_cast<quint32>(sizeof head + channels.size() * sizeof(LdChannelHeader));
    quint32 recordEnd = sizeof head;
    head.firstHeaderOffset = channels.empty() ? 0 : recordEnd;
    QByteArray records;
    QByteArray samples;
    for (auto [header, bytes] : channels) {
        recordEnd += sizeof header;
        header.nextHeaderOffset = recordEnd < dataOffset ? recordEnd : 0;
        header.dataOffset = dataOffset + static_cast<quint32>(samples.size());
        records += bytesOf(header);
        samples += bytes;
    }
    return bytesOf(head) + records + samples;
}

} // namespace LdWriter
