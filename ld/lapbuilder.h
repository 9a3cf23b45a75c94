#pragma once

// Internal: the laps of a log while they are filled, channel by channel, so that no more than one channel of the whole
// log need be at hand. What laps are: lapcutter.h.

#include "ld/ldfile.h"
#include "sdk/lap.h"
#include "sdk/lapchannels.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <span>
#include <vector>

namespace LapChannels = KOV::SDK::LapChannels;

class LapBuilder
{
public:
    /// Whether two channels of these lengths, distance and counter, can be cut at all.
    static bool canCut(qint64 distanceLength, qint64 counterLength);
    /// The number of laps that a builder of the same arguments makes, without making any.
    static qint64 countLaps(qint64 distanceLength, std::span<const float> counter);

    /// Makes all laps, without channels, and fills their headers but for the lap times.
    LapBuilder(qint64 distanceLength, std::span<const float> counter);

    /// Adds to every lap its piece of the channel @p samples under @p name.
    void addChannel(const QString &name, const LdChannelHeader &header, std::span<const float> samples);
    /// Sets the lap times, from the whole log's timing channels; an empty one sets none.
    void setLapTimes(std::span<const float> currentTime, std::span<const float> lastTime);
    /// Repairs the laps' timers, once all channels are there, and hands the laps over.
    QList<QSharedPointer<KOV::SDK::Lap>> finish();

private:
    struct Piece
    {
        qint64 begin;
        qint64 end;
    };

    std::vector<Piece> pieces; // of the log, one a lap
    QList<QSharedPointer<KOV::SDK::Lap>> laps;
};
