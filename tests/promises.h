#pragma once

// What the tests and the fuzz targets share: comparison, and what every list of laps promises.

#include "sdk/lap.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <tuple>

namespace Testing {

using Laps = QList<QSharedPointer<KOV::SDK::Lap>>;

/// QCOMPARE on doubles is approximate and finds two NaNs different; this is neither.
inline bool sameBits(double a, double b)
{
    return std::bit_cast<quint64>(a) == std::bit_cast<quint64>(b);
}

/// All of a car, to be compared.
inline auto membersOf(const KOV::SDK::CarInfo &car)
{
    return std::tie(car.carId, car.sourceName, car.pluginName, car.carName, car.className, car.driverName, car.teamName,
                    car.status, car.detailedTelemetry);
}

inline bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Laps numbered from 0 in one stint, all but the last completed, with headers of valid texts and channels of one
/// length.
inline bool areSound(const Laps &laps)
{
    for (qsizetype i = 0; i < laps.size(); ++i) {
        const KOV::SDK::LapHeader &header = laps[i]->header();
        const KOV::SDK::LapHeader &first = laps[0]->header();
        const bool isPlaced = header.stintLapIndex == i && header.completed == (i + 1 < laps.size()) &&
                              header.lapKind == (i == 0 ? 0 : 1) && header.stintNumber == 1;
        const bool isNamed = !header.lapId.isNull() && !header.stintId.isNull() && !header.sessionId.isNull() &&
                             header.stintId == first.stintId && header.sessionId == first.sessionId &&
                             header.stintId != header.sessionId &&
                             (i == 0 || header.lapId != laps[i - 1]->header().lapId);
        const bool hasTexts = header.venueName.isValidUtf16() && header.carInfo.driverName.isValidUtf16() &&
                              header.carInfo.carName.isValidUtf16();
        if (!isPlaced || !isNamed || !hasTexts)
            return false;
        for (const QString &name : laps[i]->getAvailableRecordedChannels()) {
            const auto channel = laps[i]->channel(name);
            if (channel->size() != laps[i]->size() || channel->capacity() < channel->size())
                return false;
        }
    }
    return true;
}

} // namespace Testing
