#include "ld/lapbuilder.h"

#include "sdk/channelutils.h"

#include <QtCore/QTime>
#include <QtCore/QUuid>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

using KOV::SDK::Channel;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;

namespace Ld {

namespace {

constexpr float timerRestart = 5.0F; // seconds: a larger fall of the running time is the start of a lap
constexpr float millisecondsPerSecond = 1000.0F;
constexpr int millisecondsPerDay = 24 * 60 * 60 * 1000;
constexpr float intEnd = 2147483648.0F; // the first float beyond the 32-bit integers; its negative is the first of them

qint32 truncated(float value)
{
    if (std::isnan(value))
        return 0;
    if (value >= intEnd)
        return std::numeric_limits<qint32>::max();
    return value >= -intEnd ? static_cast<qint32>(value) : std::numeric_limits<qint32>::min();
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

// The lap time that a log writes as @p seconds; invalid if that is not a time.
QTime lapTimeOf(float seconds)
{
    const float milliseconds = std::round(seconds * millisecondsPerSecond);
    if (!(milliseconds >= -intEnd && milliseconds < intEnd))
        return {};
    // Whole days make no difference to a QTime, but they do to its arithmetic near the limits of an int.
    return QTime(0, 0, 0, 0).addMSecs(static_cast<int>(milliseconds) % millisecondsPerDay);
}

} // namespace

std::vector<LapPiece> lapPieces(qint64 distanceLength, const SampleView &counter, std::size_t maxPieces)
{
    const qint64 last = distanceLength - 1;
    std::vector<LapPiece> pieces;
    qint64 begin = 0;
    qint32 number = truncated(counter[0]);
    qint64 i = 0;
    counter.visit(0, std::min(last, counter.size()), [&](std::span<const float> samples) {
        for (const float value : samples) {
            if (value > static_cast<float>(number) && pieces.size() < maxPieces) {
                pieces.push_back({begin, i, number});
                begin = i;
                number = truncated(value);
            }
            ++i;
        }
    });
    if (pieces.size() < maxPieces)
        pieces.push_back({begin, last, number});
    return pieces;
}

LapBuilder::LapBuilder(std::vector<LapPiece> lapPieces)
    : pieces(std::move(lapPieces))
{
    const QUuid stintId = QUuid::createUuid();
    const QUuid sessionId = QUuid::createUuid();
    for (const LapPiece &piece : pieces) {
        auto lap = QSharedPointer<Lap>::create();
        LapHeader &header = lap->header();
        header.lapId = QUuid::createUuid();
        header.stintId = stintId;
        header.sessionId = sessionId;
        header.lapKind = laps.isEmpty() ? KOV::SDK::outLapKind : KOV::SDK::laterLapKind;
        header.completed = &piece != &pieces.back();
        header.lapNumber = piece.lapNumber;
        header.stintLapIndex = static_cast<qint32>(laps.size());
        header.stintNumber = 1;
        laps.append(std::move(lap));
    }
}

void LapBuilder::addChannel(const QString &name, const LdChannelHeader &header, const SampleView &samples)
{
    // What the record says decides, not the lower-case name.
    QString unit = ldText(header, &LdChannelHeader::unit);
    const bool isInPercent =
        unit == QLatin1String("%") && ldText(header, &LdChannelHeader::name) == LapChannels::distance;
    if (isInPercent)
        unit = LapChannels::distanceUnit;
    const bool isTimer = name == LapChannels::currentTime;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto [begin, end, lapNumber] = pieces[i];
        Lap &lap = *laps[static_cast<qsizetype>(i)];
        auto channel = QSharedPointer<Channel>::create();
        channel->setUnit(unit);
        channel->reserve(end - begin);
        samples.visit(begin, std::min(end, samples.size()), [&](std::span<const float> recorded) {
            appendWidened(*channel, recorded, isInPercent ? LapChannels::percent : 1.0);
        });
        if (isTimer) // before it is filled up: the repair takes the filler for a time
            KOV::SDK::ChannelUtils::normalizeChannelBeginning(channel.get(), lap.channel(LapChannels::distance).get());
        channel->append(end - begin - channel->size(), KOV::SDK::invalidValue);
        lap.addChannel(std::move(channel), name);
    }
}

void LapBuilder::setLapTimes(const SampleView &currentTime, const SampleView &lastTime)
{
    qint64 i = 0;
    qsizetype timed = 0; // laps before this one have their time
    float before = 0.0F;
    currentTime.visit(0, std::min(currentTime.size(), lastTime.size()), [&](std::span<const float> samples) {
        for (const float time : samples) {
            // The first fall at or after a lap's end, so one fall can serve several short laps.
            if (i > 0 && before - time > timerRestart) {
                for (; timed + 1 < laps.size() && pieces[static_cast<std::size_t>(timed)].end <= i; ++timed)
                    laps[timed]->header().lapTime = lapTimeOf(lastTime[i]);
            }
            before = time;
            ++i;
        }
    });
}

} // namespace Ld
