#pragma once

// What the fuzz targets share: a check that ends the process, and what every list of laps promises.

#include "sdk/lap.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// The engine's entry. Each target defines it; replay.cpp calls it where there is no engine.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size); // NOLINT(readability-identifier-naming)

namespace Fuzz {

inline void require(bool isKept)
{
    if (!isKept)
        std::abort();
}

inline QByteArrayView bytesOf(const uint8_t *data, size_t size)
{
    return {data, static_cast<qsizetype>(size)};
}

inline bool sameBits(double a, double b)
{
    return std::bit_cast<quint64>(a) == std::bit_cast<quint64>(b);
}

inline bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Writes @p content to the file @p name in a folder of this process, and returns its path.
inline QString write(const QString &name, QByteArrayView content)
{
    static const QTemporaryDir folder;
    QFile file(folder.filePath(name));
    require(file.open(QIODevice::WriteOnly) && file.write(content.data(), content.size()) == content.size());
    return file.fileName();
}

/// Channels of one length, laps numbered from 0, all but the last completed, headers with valid texts.
inline void requireSoundLaps(const QList<QSharedPointer<KOV::SDK::Lap>> &laps)
{
    for (qsizetype i = 0; i < laps.size(); ++i) {
        const KOV::SDK::Lap &lap = *laps[i];
        const KOV::SDK::LapHeader &header = lap.header();
        require(header.stintLapIndex == i && header.completed == (i + 1 < laps.size()));
        require(header.lapKind == (i == 0 ? 0 : 1) && header.stintNumber == 1);
        require(header.stintId == laps[0]->header().stintId && header.sessionId == laps[0]->header().sessionId);
        require(header.venueName.isValidUtf16() && header.carInfo.driverName.isValidUtf16() &&
                header.carInfo.carName.isValidUtf16());
        for (const QString &name : lap.getAvailableRecordedChannels()) {
            const auto channel = lap.channel(name);
            require(channel->size() == lap.size() && channel->capacity() >= channel->size());
        }
    }
}

} // namespace Fuzz
