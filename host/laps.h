#pragma once

// Questions to a list of laps that every view of a log asks: times, the best lap, channels and what they range over.

#include "sdk/lap.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTime>

#include <optional>
#include <vector>

namespace Host {

using Laps = QList<QSharedPointer<KOV::SDK::Lap>>;

/// Whether @p time is a lap's time: not for an invalid one, for 0, for the 00:59:59.000 that importers write where a
/// lap has none, or for one from 23:00 on, which was logged as below zero.
bool hasLapTime(QTime time);

/// Index of the fastest completed lap that has a time; of two equal ones the earlier. The out lap counts only where no
/// other lap does: it starts in the pits or in the middle of a lap.
std::optional<qsizetype> bestLap(const Laps &laps);

/// The lap that a view of one lap shows unless told otherwise: the best, or else the one with the most samples.
/// There must be a lap.
qsizetype usualLap(const Laps &laps);

struct NamedChannel
{
    QString name;
    QSharedPointer<KOV::SDK::Channel> channel; ///< never null
    bool isCalculated = false;
};

/// All channels of @p lap by name, the recorded ones before the calculated ones.
std::vector<NamedChannel> channelsOf(const KOV::SDK::Lap &lap);

/// The names of all channels of @p lap, each once.
QStringList channelNames(const KOV::SDK::Lap &lap);

/// The recorded channel @p name, or else the calculated one, or null.
QSharedPointer<KOV::SDK::Channel> findChannel(const KOV::SDK::Lap &lap, const QString &name);

/// Number of different channel names in @p laps.
qsizetype channelCount(const Laps &laps);

struct Range
{
    double minimum;
    double maximum;
};

struct ChannelSummary
{
    long long samples = 0;
    long long validSamples = 0;
    std::optional<Range> range; ///< over the valid samples; none without any
};

ChannelSummary summaryOf(const KOV::SDK::Channel &channel);

} // namespace Host
