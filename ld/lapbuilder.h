#pragma once

// Internal: the laps of a log while they are filled channel by channel, so that only one channel of the whole log need
// be in memory at a time. What laps are: lapcutter.h.

#include "ld/ldfile.h"
#include "ld/sampleview.h"
#include "sdk/lap.h"
#include "sdk/lapchannels.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <limits>
#include <utility>
#include <vector>

namespace Ld {

namespace LapChannels = KOV::SDK::LapChannels;

/// A lap's part of the log: samples begin to before end.
struct LapPiece
{
    qint64 begin;
    qint64 end;
    qint32 lapNumber;
};

/// Cuts a log of @p distanceLength samples by its lap counter, the unfinished lap last; stops after @p maxPieces. Both
/// lengths are at least ldMinSamples.
std::vector<LapPiece> lapPieces(qint64 distanceLength, const SampleView &counter,
                                std::size_t maxPieces = std::numeric_limits<std::size_t>::max());

class LapBuilder
{
public:
    /// Makes one lap of each piece, without channels, and fills the headers except for the lap times.
    explicit LapBuilder(std::vector<LapPiece> lapPieces);

    /// Adds its piece of the channel @p samples to every lap under @p name. "lapdistpct" comes first, because
    /// "lapcurrentlaptime" is repaired by it.
    void addChannel(const QString &name, const LdChannelHeader &header, const SampleView &samples);
    /// Sets the lap times from the timing channels of the whole log; an empty one sets none.
    void setLapTimes(const SampleView &currentTime, const SampleView &lastTime);
    QList<QSharedPointer<KOV::SDK::Lap>> takeLaps() { return std::move(laps); }

private:
    std::vector<LapPiece> pieces;
    QList<QSharedPointer<KOV::SDK::Lap>> laps;
};

} // namespace Ld
