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

/// Overwrites the bytes of @p file at @p offset, making it longer where that is needed.
template <typename Record>
void put(QByteArray &file, qint64 offset, const Record &record)
{
    file.resize(std::max(file.size(), static_cast<qsizetype>(offset + qint64{sizeof record})), '\0');
    std::memcpy(file.data() + offset, &record, sizeof record);
}

/// Raw values as a log stores them.
template <typename Stored>
QByteArray raw(const std::vector<Stored> &values)
{
    QByteArray bytes;
    for (const Stored value : values)
        put(bytes, bytes.size(), LdInteger<Stored>(value));
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

/// A whole log. Offsets are set here; a sampleCount is taken from the record unchanged.
inline QByteArray log(const std::vector<Channel> &channels, LdHeadBlock head = {})
{
    quint32 offset = sizeof head;
    const auto recordsEnd = static_cast<quint32>(offset + channels.size() * sizeof(LdChannelHeader));
    head.firstHeaderOffset = offset < recordsEnd ? offset : 0;
    QByteArray file(static_cast<qsizetype>(recordsEnd), '\0');
    put(file, 0, head);
    for (auto [header, samples] : channels) {
        const auto next = static_cast<quint32>(offset + sizeof header);
        header.nextHeaderOffset = next < recordsEnd ? next : 0;
        header.dataOffset = static_cast<quint32>(file.size());
        put(file, offset, header);
        file += samples;
        offset = next;
    }
    return file;
}

} // namespace LdWriter
