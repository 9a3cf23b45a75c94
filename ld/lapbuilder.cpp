#include "ld/lapbuilder.h"

#include "ld/lapcutter.h"
#include "sdk/channelutils.h"

#include <QtCore/QTime>
#include <QtCore/QUuid>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

using KOV::SDK::Channel;
using KOV::SDK::ChannelUtils;
using KOV::SDK::invalidValue;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;

namespace {

constexpr float timerRestart = 5.0F; // seconds: a larger fall of the running time is the start of a lap
constexpr float millisecondsPerSecond = 1000.0F;
constexpr int millisecondsPerDay = 24 * 60 * 60 * 1000;
constexpr float intEnd = 2147483648.0F; // the first float behind the 32-bit integers; its negative is the first of them

qint32 truncated(float value)
{
    if (std::isnan(value))
        return 0;
    if (value >= intEnd)
        return std::numeric_limits<qint32>::max();
    return value >= -intEnd ? static_cast<qint32>(value) : std::numeric_limits<qint32>::min();
}

// Calls visit(begin, end, lapNumber) for each lap, the unfinished one last.
template <typename Visit>
void walkLaps(qint64 distanceLength, std::span<const float> counter, Visit visit)
{
    const qint64 last = distanceLength - 1;
    const qint64 counted = std::min<qint64>(last, std::ssize(counter));
    qint64 begin = 0;
    qint32 number = truncated(counter.front());
    for (qint64 i = 0; i < counted; ++i) {
        const float value = counter[static_cast<std::size_t>(i)];
        if (!(value > static_cast<float>(number)))
            continue;
        visit(begin, i, number);
        begin = i;
        number = truncated(value);
    }
    visit(begin, last, number);
}

void appendWidened(Channel &channel, std::span<const float> samples, double factor)
{
    std::array<double, 1024> block; // NOLINT(cppcoreguidelines-pro-type-member-init): written before it is read
    while (!samples.empty()) {
        const auto piece = samples.first(std::min(samples.size(), block.size()));
        std::transform(piece.begin(), piece.end(), block.begin(),
                       [factor](float sample) { return static_cast<double>(sample) * factor; });
        channel.append(std::span(block).first(piece.size()));
        samples = samples.subspan(piece.size());
    }
}

// The lap time that a log writes as @p seconds; invalid where it is no time.
QTime lapTimeOf(float seconds)
{
    const float milliseconds = std::round(seconds * millisecondsPerSecond);
    if (!(milliseconds >= -intEnd && milliseconds < intEnd))
        return {};
    // Whole days make no difference to a QTime, but to its arithmetic near the bounds of an int.
    return QTime(0, 0, 0, 0).addMSecs(static_cast<int>(milliseconds) % millisecondsPerDay);
}

} // namespace

bool LapBuilder::canCut(qint64 distanceLength, qint64 counterLength)
{
    return distanceLength >= ldFewestSamples && counterLength >= ldFewestSamples;
}

qint64 LapBuilder::countLaps(qint64 distanceLength, std::span<const float> counter)
{
    qint64 count = 0;
    walkLaps(distanceLength, counter, [&count](qint64, qint64, qint32) { ++count; });
    return count;
}

LapBuilder::LapBuilder(qint64 distanceLength, std::span<const float> counter)
{
    const QUuid stintId = QUuid::createUuid();
    const QUuid sessionId = QUuid::createUuid();
    walkLaps(distanceLength, counter, [&](qint64 begin, qint64 end, qint32 lapNumber) {
        auto lap = QSharedPointer<Lap>::create();
        LapHeader &header = lap->header();
        header.lapId = QUuid::createUuid();
        header.stintId = stintId;
        header.sessionId = sessionId;
        header.lapKind = laps.isEmpty() ? KOV::SDK::outLapKind : KOV::SDK::laterLapKind;
        header.completed = end < distanceLength - 1;
        header.lapNumber = lapNumber;
        header.stintLapIndex = static_cast<qint32>(laps.size());
        header.stintNumber = 1;
        pieces.push_back({begin, end});
        laps.append(std::move(lap));
    });
}

void LapBuilder::addChannel(const QString &name, const LdChannelHeader &header, std::span<const float> samples)
{
    // Judged by what the record says, not by the lower-case name.
    QString unit = ldText(header, &LdChannelHeader::unit);
    const bool inPercent =
        unit == QLatin1String("%") && ldText(header, &LdChannelHeader::name) == LapChannels::distance;
    if (inPercent)
        unit = LapChannels::distanceUnit;
    const qint64 available = std::ssize(samples);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto [begin, end] = pieces[i];
        auto channel = QSharedPointer<Channel>::create();
        channel->setUnit(unit);
        channel->reserve(end - begin);
        const qint64 from = std::min(begin, available);
        const qint64 recorded = std::min(end, available) - from;
        appendWidened(*channel, samples.subspan(static_cast<std::size_t>(from), static_cast<std::size_t>(recorded)),
                      inPercent ? LapChannels::percent : 1.0);
        channel->append(end - begin - recorded, invalidValue);
        laps[static_cast<qsizetype>(i)]->addChannel(std::move(channel), name);
    }
}

void LapBuilder::setLapTimes(std::span<const float> currentTime, std::span<const float> lastTime)
{
    const std::size_t count = std::min(currentTime.size(), lastTime.size());
    // Cuts come in order, so the scan for one goes on where that for the one before has ended: once over the log in
    // all.
    std::size_t restart = 1;
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        restart = std::max(restart, static_cast<std::size_t>(pieces[i].end));
        while (restart < count && !(currentTime[restart - 1] - currentTime[restart] > timerRestart))
            ++restart;
        if (restart >= count)
            return;
        laps[static_cast<qsizetype>(i)]->header().lapTime = lapTimeOf(lastTime[restart]);
    }
}

QList<QSharedPointer<Lap>> LapBuilder::finish()
{
    for (const QSharedPointer<Lap> &lap : std::as_const(laps)) {
        const auto timer = lap->channel(LapChannels::currentTime);
        const auto distance = lap->channel(LapChannels::distance);
        if (timer && distance)
            ChannelUtils::normalizeChannelBeginning(timer.get(), distance.get());
    }
    return std::exchange(laps, {});
}
