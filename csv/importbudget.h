#pragma once

// What one text export may cost in memory beyond the numbers that it holds. Used by orvareader.cpp.

#include <QtCore/qglobal.h>

#include <algorithm>

namespace Csv {

/// Counts the bytes that padding, channels, laps and sidecar values take.
///
/// Rows of uneven length are padded, and laps of few rows hold little, so both cost more than their text. A hostile
/// file of a megabyte could ask for a terabyte. Every file may take 512 MiB, and 32 bytes more for each of its own
/// bytes.
class ImportBudget
{
public:
    /// For a file of @p fileSize bytes, whose laps get @p valuesPerLap values of the sidecar each.
    ImportBudget(qint64 fileSize, qint64 valuesPerLap)
        : left(baseBytes + std::min(fileSize, largestFile) * bytesPerByte)
        , bytesPerLap(lapBytes + valuesPerLap * valueBytes)
    {
    }

    // These take what is about to be stored, and answer false when the budget is spent.

    /// A lap that begins with @p channelCount channels.
    bool takeLap(qint64 channelCount) { return take(bytesPerLap + channelCount * channelBytes); }
    /// Channels that join a lap of @p rowCount rows.
    bool takeChannels(qint64 channelCount, qint64 rowCount)
    {
        return take(channelCount * (channelBytes + rowCount * sampleBytes));
    }
    /// Samples that fill up the channels that a short row lacks.
    bool takePadding(qint64 sampleCount) { return take(sampleCount * sampleBytes); }

private:
    bool take(qint64 bytes)
    {
        left -= bytes;
        return left >= 0;
    }

    static constexpr qint64 baseBytes = qint64{512} * 1024 * 1024;
    static constexpr qint64 bytesPerByte = 32;
    static constexpr qint64 largestFile = qint64{1} << 56; // sparse ones can claim more
    static constexpr qint64 sampleBytes = sizeof(double);
    // With what the allocator and the maps add.
    static constexpr qint64 channelBytes = 256; // a short one, its name and its place in the lap
    static constexpr qint64 lapBytes = 768;     // and its calculated distance
    static constexpr qint64 valueBytes = 120;

    qint64 left;
    qint64 bytesPerLap;
};

} // namespace Csv
