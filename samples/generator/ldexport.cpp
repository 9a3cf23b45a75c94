// The binary log. All numbers are little-endian, all offsets count from the start of the file.

#include "ldexport.h"

#include <QtCore/QtEndian>

#include <algorithm>
#include <limits>

namespace samples {

namespace {

constexpr qsizetype headBytes = 1762;
constexpr qsizetype secondBlockBytes = 1154;
constexpr qsizetype thirdBlockBytes = 1100;
constexpr qsizetype fourthBlockBytes = 260;
constexpr qsizetype recordBytes = 124;

// The blocks follow each other at once, and the records follow the blocks.
constexpr qsizetype secondBlockOffset = headBytes;
constexpr qsizetype thirdBlockOffset = secondBlockOffset + secondBlockBytes;
constexpr qsizetype fourthBlockOffset = thirdBlockOffset + thirdBlockBytes;
constexpr qsizetype firstRecordOffset = fourthBlockOffset + fourthBlockBytes;

// Places in the head and at the ends of the blocks.
constexpr qsizetype firstRecordLink = 8;
constexpr qsizetype secondBlockLink = 36;
constexpr qsizetype driverText = 158;
constexpr qsizetype vehicleText = 222;
constexpr qsizetype venueText = 350;
constexpr qsizetype sessionText = 1508;
constexpr qsizetype thirdBlockLink = 1152;
constexpr qsizetype fourthBlockLink = 1098;

// Places in a channel record.
constexpr qsizetype previousRecordField = 0;
constexpr qsizetype nextRecordField = 4;
constexpr qsizetype dataOffsetField = 8;
constexpr qsizetype sampleCountField = 12;
constexpr qsizetype typeField = 18;
constexpr qsizetype widthField = 20;
constexpr qsizetype rateField = 22;
constexpr qsizetype shiftField = 24;
constexpr qsizetype multiplierField = 26;
constexpr qsizetype scaleField = 28;
constexpr qsizetype decimalsField = 30;
constexpr qsizetype nameField = 32;
constexpr qsizetype unitField = 72;
constexpr qsizetype nameWidth = unitField - nameField;
constexpr qsizetype unitWidth = recordBytes - unitField;

constexpr quint16 integerType = 3;
constexpr quint16 otherIntegerType = 5;

template <typename T>
void put(QByteArray &block, qsizetype offset, T value)
{
    qToLittleEndian(value, block.data() + offset);
}

void putText(QByteArray &block, qsizetype offset, qsizetype width, const QByteArray &text)
{
    const qsizetype count = std::min(text.size(), width - 1); // a NUL ends the text
    std::copy_n(text.constData(), count, block.data() + offset);
}

QByteArray nameInLog(const Channel &channel)
{
    if (channel.name == "Lap Number")
        return "Lap";
    // Readers take this one for a percentage by its exact name.
    if (channel.name == "Lap Dist Pct")
        return "lapdistpct";
    return QByteArray(channel.name).replace(" ", "").replace("-", "");
}

QByteArray head(const LogInfo &info)
{
    QByteArray block(firstRecordOffset, '\0');
    put(block, firstRecordLink, quint32{firstRecordOffset});
    put(block, secondBlockLink, quint32{secondBlockOffset});
    put(block, secondBlockOffset + thirdBlockLink, quint16{thirdBlockOffset});
    put(block, thirdBlockOffset + fourthBlockLink, quint16{fourthBlockOffset});
    putText(block, driverText, vehicleText - driverText, info.driver);
    putText(block, vehicleText, venueText - vehicleText, info.vehicle);
    putText(block, venueText, sessionText - venueText, info.venue);
    putText(block, sessionText, headBytes - sessionText, info.session);
    return block;
}

QByteArray record(const Channel &channel, quint16 type, qint64 previous, qint64 next, qint64 data, qint64 count)
{
    QByteArray block(recordBytes, '\0');
    put(block, previousRecordField, static_cast<quint32>(previous));
    put(block, nextRecordField, static_cast<quint32>(next));
    put(block, dataOffsetField, static_cast<quint32>(data));
    put(block, sampleCountField, static_cast<quint32>(count));
    put(block, typeField, type);
    put(block, widthField, channel.ld.width);
    put(block, rateField, channel.ld.rate);
    put(block, shiftField, channel.ld.shift);
    put(block, multiplierField, channel.ld.multiplier);
    put(block, scaleField, channel.ld.scale);
    put(block, decimalsField, static_cast<qint16>(channel.decimals));
    putText(block, nameField, nameWidth, nameInLog(channel));
    putText(block, unitField, unitWidth, channel.unit);
    return block;
}

// The stored number, which is a whole number of the channel's resolution however it is shifted and scaled.
qint64 storedValue(const Channel &channel, const CarState &state)
{
    double shift = channel.ld.shift;
    for (int i = 0; i < channel.decimals; ++i)
        shift *= 10.0;
    return rounded(channel.scaledValue(state) / channel.ld.multiplier - shift) * channel.ld.scale;
}

template <typename T>
void writeInteger(char *out, qint64 value)
{
    constexpr qint64 minimum = std::numeric_limits<T>::min();
    constexpr qint64 maximum = std::numeric_limits<T>::max();
    qToLittleEndian(static_cast<T>(std::clamp(value, minimum, maximum)), out);
}

void writeSamples(Inspect::BlockWriter &file, Drive &drive, const Channel &channel)
{
    const qint64 count = drive.sampleCount(channel.ld.rate);
    for (qint64 i = 0; i < count && !file.isFull(); ++i) {
        const CarState &state = drive.at(i, channel.ld.rate);
        char *out = file.room(channel.ld.width);
        if (channel.ld.width == 2)
            writeInteger<qint16>(out, storedValue(channel, state));
        else
            writeInteger<qint32>(out, storedValue(channel, state));
        file.commit(out + channel.ld.width);
    }
}

} // namespace

bool writeLd(Inspect::BlockWriter &file, Drive &drive, const std::vector<Channel> &channels, const LogInfo &info)
{
    const auto channelCount = static_cast<qint64>(channels.size());
    qint64 data = firstRecordOffset + channelCount * recordBytes;
    qint64 end = data;
    for (const Channel &channel : channels)
        end += drive.sampleCount(channel.ld.rate) * channel.ld.width;
    if (end > std::numeric_limits<quint32>::max())
        return false;

    file.write(head(info));
    qint64 previous = 0;
    qint64 offset = firstRecordOffset;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const Channel &channel = channels[i];
        const qint64 next = i + 1 == channels.size() ? 0 : offset + recordBytes;
        const qint64 count = drive.sampleCount(channel.ld.rate);
        file.write(record(channel, i % 2 == 0 ? integerType : otherIntegerType, previous, next, data, count));
        data += count * channel.ld.width;
        previous = offset;
        offset += recordBytes;
    }
    for (const Channel &channel : channels)
        writeSamples(file, drive, channel);
    return true;
}

qint64 ldSamplesForSize(const std::vector<Channel> &channels, int rate, qint64 sizeBytes)
{
    qint64 bytesPerSecond = 0;
    for (const Channel &channel : channels)
        bytesPerSecond += channel.ld.rate * channel.ld.width;
    return std::max(sizeBytes * rate / std::max(bytesPerSecond, 1LL), 1LL);
}

} // namespace samples
