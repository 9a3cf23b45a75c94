#include "inspect/lapplan.h"

#include "inspect/rewriteerror.h"
#include "inspect/signalnames.h"
#include "inspect/words.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Inspect {

namespace {

constexpr double percentPerLap = 100.0;
constexpr double spareRange = 50.0;     // percent by which a position may lie outside 0 to 100
constexpr double largestFraction = 1.5; // a position that stays below it counts laps from 0 to 1
constexpr double smallestNumberChange = 0.5;
constexpr double smallestTimeChange = 0.02; // s: running times jitter by their last digit
constexpr double sameInstant = 1e-7;        // s: rows and marks are decimals
constexpr double shortestPiece = 1.0;       // s: marks closer than that leave too few rows for the import to see a lap
constexpr double nearMark = 1.0;            // s between a mark and what a channel says of the same line
constexpr double nearTime = 0.5;            // s between a lap time of a channel and that of the marks
constexpr double longestTimerDelay = 2.0;   // s that a timer may start again after the line
constexpr double microseconds = 1e6;

bool isTimeRole(LapRole role)
{
    return role == LapRole::CurrentLapTime || role == LapRole::LastLapTime || role == LapRole::Time;
}

QString secondsText(double seconds)
{
    return QString::number(seconds, 'f', 3);
}

// The import multiplies by 1000 and drops the fraction, which can cost the last millisecond of a decimal; the next
// number above it keeps it.
double importable(double seconds)
{
    const double exact = std::round(seconds * microseconds) / microseconds;
    const long long wholeMilliseconds = std::llround(exact * microseconds) / 1000;
    const auto milliseconds = static_cast<double>(wholeMilliseconds);
    double written = exact;
    while (std::trunc(written * 1000.0) < milliseconds)
        written = std::nextafter(written, std::numeric_limits<double>::max());
    return written;
}

// The mark that is nearest to a line, if there is one of it.
std::optional<double> nearestMark(const std::vector<LapMarks> &lists, double line)
{
    for (const LapMarks &marks : lists) {
        if (!std::is_sorted(marks.seconds.begin(), marks.seconds.end()))
            continue;
        const auto after = std::lower_bound(marks.seconds.begin(), marks.seconds.end(), line);
        const double next = after == marks.seconds.end() ? line + 2.0 * nearMark : *after;
        const double before = after == marks.seconds.begin() ? line - 2.0 * nearMark : *(after - 1);
        const double nearest = next - line < line - before ? next : before;
        if (std::abs(nearest - line) <= nearMark)
            return nearest;
    }
    return std::nullopt;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

std::vector<LapChannel> lapChannels(const QStringList &titles, const QStringList &units,
                                    const std::vector<LapMapping> &mappings)
{
    std::vector<LapChannel> channels;
    const auto add = [&](qsizetype column, LapRole role, double scale) -> LapChannel & {
        const QString &title = titles[column];
        const DrivingChannel *exact = drivingChannelOfTitle(title);
        channels.push_back({role, static_cast<std::size_t>(column), title,
                            scale * (isTimeRole(role) ? unitFactor(units.value(column), u"s").value_or(1.0) : 1.0),
                            false, false, exact && exact->role == role});
        return channels.back();
    };
    for (const LapMapping &mapping : mappings) {
        qsizetype column = titles.indexOf(mapping.title);
        for (qsizetype i = 0; column < 0 && i < titles.size(); ++i) {
            if (valueName(titles[i]) == valueName(mapping.title))
                column = i;
        }
        if (column < 0)
            throw RewriteError(
                QStringLiteral("no channel \"%1\" for \"%2\"; \"orva-host channels --stored\" lists them")
                    .arg(mapping.title, QString(drivingChannel(mapping.role).title)));
        LapChannel &channel = add(column, mapping.role, 1.0);
        channel.isMapped = true;
        channel.isScaleGiven = mapping.scale.has_value();
        if (mapping.scale)
            channel.scale = *mapping.scale;
    }
    for (const OtherName &other : otherNames()) {
        for (qsizetype column = 0; column < titles.size(); ++column) {
            if (otherName(titles[column]) == &other)
                add(column, other.role, other.scale);
        }
    }
    return channels;
}

LapChannelSurvey::LapChannelSurvey(LapChannel lapChannel)
    : source(std::move(lapChannel))
    , restart(source.role == LapRole::CurrentLapTime ? RestartSignal::Kind::Time : RestartSignal::Kind::Distance)
    , position(percentPerLap / (source.isScaleGiven ? source.scale : 1.0))
    , positionFraction(1.0)
    , held(source.role == LapRole::LapNumber ? smallestNumberChange : smallestTimeChange)
{
}

void LapChannelSurvey::add(double time, double value)
{
    switch (source.role) {
    case LapRole::Position:
        position.add(time, value);
        positionFraction.add(time, value);
        break;
    case LapRole::LapNumber:
        counter.add(time, value);
        held.add(time, value * source.scale);
        break;
    case LapRole::CurrentLapTime:
        restart.add(time, value * source.scale);
        if (value > 0.0) // a timer that has stopped says nothing
            held.add(time, time - value * source.scale);
        break;
    case LapRole::LastLapTime:
        held.add(time, value * source.scale);
        break;
    case LapRole::LapDistance:
        restart.add(time, value);
        odometer.add(time, value);
        break;
    case LapRole::LogDistance:
        odometer.add(time, value);
        break;
    case LapRole::Beacon:
        beacon.add(time, value);
        break;
    case LapRole::Time:
        break;
    }
}

std::optional<double> LapChannelSurvey::percentScale() const
{
    if (!(position.maximum() > position.minimum()))
        return std::nullopt;
    if (source.isScaleGiven)
        return source.scale;
    const double scale = position.maximum() <= largestFraction ? percentPerLap : 1.0;
    const bool isInRange =
        position.minimum() * scale > -spareRange && position.maximum() * scale < percentPerLap + spareRange;
    return isInRange ? std::optional(scale) : std::nullopt;
}

const LapEvents &LapChannelSurvey::events() const
{
    switch (source.role) {
    case LapRole::Position:
        return !source.isScaleGiven && position.maximum() <= largestFraction ? positionFraction.events()
                                                                             : position.events();
    case LapRole::LapNumber:
        return counter.events();
    case LapRole::Beacon:
        return beacon.events();
    default:
        return restart.events();
    }
}

LapPlan::LapPlan(LapClues lapClues)
    : clues(std::move(lapClues))
{
    if (clues.userMarks) { // then no channel of the log is asked, but for those that the user names, and for distances
        std::erase_if(clues.channels, [](const LapChannelSurvey &survey) {
            return !survey.channel().isMapped && !survey.is(LapRole::LapDistance) && !survey.is(LapRole::LogDistance);
        });
    }
    for (const LapRole role : {LapRole::LapDistance, LapRole::LogDistance}) {
        for (const LapChannelSurvey *survey : channelsOf(role)) {
            if (!wayChannel && survey->way().at(clues.lastTime) > 0.0)
                wayChannel = survey;
        }
    }
    findLaps();
    setClocks();
    setNumbers();
    setLapTimes();
    setPositions();
    copyExactChannels();
}

std::vector<const LapChannelSurvey *> LapPlan::channelsOf(LapRole role) const
{
    std::vector<const LapChannelSurvey *> found;
    for (const LapChannelSurvey &survey : clues.channels) {
        if (survey.is(role))
            found.push_back(&survey);
    }
    return found;
}

const LapChannelSurvey *LapPlan::channelOf(LapRole role) const
{
    // Of several, the first that says anything; a dead channel must not hide a live one.
    const auto found = channelsOf(role);
    for (const LapChannelSurvey *survey : found) {
        if (survey->channel().isMapped || !survey->events().list().empty())
            return survey;
    }
    return found.empty() ? nullptr : found.front();
}

// The channel follows from the laps, and from @p survey if that is not null.
void LapPlan::setSource(LapRole role, const QString &origin, const LapChannelSurvey *survey)
{
    DrivingSource &target = sources[static_cast<std::size_t>(role)];
    target.kind = DrivingSource::Kind::Laps;
    target.origin = origin;
    if (survey) {
        target.column = survey->channel().column;
        target.origin = quoted(survey->channel().title) + origin;
    }
}

// In the order of preference; the first that gives a lap wins.
void LapPlan::findLaps()
{
    laps = {Lap{}};
    laps.front().start = clues.firstTime;
    laps.front().line = clues.firstTime;
    laps.front().isWhole = clues.onlyLap.has_value();

    for (const LapChannelSurvey *survey : channelsOf(LapRole::Position)) {
        if (!positionChannel && survey->percentScale())
            positionChannel = survey;
        else if (!positionChannel)
            notes.append(QStringLiteral("%1 is not used: its range is not that of a position round the lap")
                             .arg(quoted(survey->channel().title)));
    }
    if (clues.userMarks && positionChannel)
        throw RewriteError(QStringLiteral("both the given marks and %1 say where laps begin, expected one of them")
                               .arg(quoted(positionChannel->channel().title)));
    bool isFound = false;
    if (clues.userMarks) {
        isFound = takeMarks(*clues.userMarks, true);
    } else if (positionChannel && (positionChannel->channel().isMapped || !positionChannel->events().list().empty())) {
        isFound = true;
        takeEvents(positionChannel->events().list(), QStringLiteral("fall"), positionChannel);
    }
    for (const LapMarks &marks : clues.marks)
        isFound = isFound || takeMarks(marks, false);
    const auto tryChannels = [&](LapRole role, const QString &what) {
        for (const LapChannelSurvey *survey : channelsOf(role)) {
            if (isFound || survey->events().list().empty())
                continue;
            isFound = true;
            takeEvents(survey->events().list(), what, survey);
        }
    };
    tryChannels(LapRole::Beacon, QStringLiteral("step"));
    tryChannels(LapRole::LapNumber, QStringLiteral("rise"));
    tryChannels(LapRole::LapDistance, QStringLiteral("fall"));
    tryChannels(LapRole::CurrentLapTime, QStringLiteral("fall"));
    if (positionChannel && laps.size() > 1 && positionChannel->events().list().empty()) {
        notes.append(QStringLiteral("%1 is not used: it never falls, though there are laps")
                         .arg(quoted(positionChannel->channel().title)));
        positionChannel = nullptr;
    }

    if (clues.onlyLapEnd && laps.size() == 1 && std::abs(*clues.onlyLapEnd - clues.lastTime) <= 1.5 * clues.period) {
        Lap next;
        next.start = *clues.onlyLapEnd;
        next.line = next.start;
        laps.push_back(next);
    }
    if (laps.size() == 1 && clues.onlyLap)
        lapsOrigin = QStringLiteral("one lap, named by the header row \"Range\"");
    else if (laps.size() > 1 && lapsOrigin.isEmpty())
        lapsOrigin = QStringLiteral("one lap, named by the header row \"Range\", which ends at \"End Time\"");
    areLapsKnown = laps.size() > 1;
    for (std::size_t i = 0; i < laps.size(); ++i) {
        if (i > 0 && i + 1 < laps.size())
            laps[i].isWhole = true;
        laps[i].end = i + 1 < laps.size() ? laps[i + 1].start : std::max(clues.lastTime, laps[i].start);
    }
    if (clues.onlyLap && laps.size() == 1)
        laps.front().end = clues.lastTime + clues.period;
}

void LapPlan::takeEvents(const std::vector<LapEvent> &events, const QString &what, const LapChannelSurvey *survey)
{
    for (const LapEvent &event : events) {
        Lap lap;
        lap.start = event.sampleTime;
        lap.settled = event.settledTime;
        lap.line = event.lineTime;
        laps.push_back(lap);
    }
    lapsOrigin = QStringLiteral("%1 of %2").arg(counted(std::ssize(events), what), quoted(survey->channel().title));
}

// Whether any of the marks lies within the rows.
bool LapPlan::takeMarks(const LapMarks &marks, bool isOfUser)
{
    if (marks.seconds.empty())
        return false;
    const auto fall = std::is_sorted_until(marks.seconds.begin(), marks.seconds.end());
    if (fall != marks.seconds.end())
        throw RewriteError(QStringLiteral("the marks of %1 contradict each other: %2 comes after %3")
                               .arg(marks.origin, secondsText(*fall), secondsText(*(fall - 1))));
    const double begin = clues.firstTime + 0.5 * clues.period;
    const double end = clues.lastTime + 1.5 * clues.period;
    qsizetype outside = 0;
    qsizetype tooClose = 0;
    qsizetype taken = 0;
    bool isStartMarked = false;
    for (const double mark : marks.seconds) {
        const bool isAtStart = std::abs(mark - clues.firstTime) <= 0.5 * clues.period;
        if (isAtStart && (isOfUser || mark != 0.0)) {
            isStartMarked = true;
            laps.front().line = std::min(mark, clues.firstTime);
            ++taken;
        } else if (isAtStart) {
            continue; // loggers write a 0 where the log begins, wherever that is
        } else if (mark <= begin || mark > end) {
            ++outside;
        } else if (laps.size() > 1 && mark - laps.back().start < shortestPiece) {
            ++tooClose;
        } else {
            Lap lap;
            lap.start = mark;
            lap.line = mark;
            laps.push_back(lap);
            ++taken;
        }
    }
    const QString range = QStringLiteral("%1 to %2 s").arg(secondsText(clues.firstTime), secondsText(clues.lastTime));
    if (outside > 0 && isOfUser)
        throw RewriteError(QStringLiteral("%1 of %2 %3 outside the rows, which last from %4")
                               .arg(counted(outside, QStringLiteral("mark")), marks.origin,
                                    outside == 1 ? QStringLiteral("lies") : QStringLiteral("lie"), range));
    if (outside > 0)
        notes.append(QStringLiteral("not used, as they lie outside the rows, which last from %1: %2 of the %3 of %4")
                         .arg(range)
                         .arg(outside)
                         .arg(counted(std::ssize(marks.seconds), QStringLiteral("mark")), marks.origin));
    if (tooClose > 0)
        notes.append(QStringLiteral("not used, as they come less than %1 s after another: %2 of %3")
                         .arg(shortestPiece)
                         .arg(counted(tooClose, QStringLiteral("mark")), marks.origin));
    if (laps.size() == 1)
        return false;
    laps.front().isWhole = laps.front().isWhole || isStartMarked;
    lapsOrigin = QStringLiteral("%1 of %2").arg(counted(taken, QStringLiteral("mark")), marks.origin);
    return true;
}

// When the time of each lap begins to count. Channels know the line to a sample or better, marks better still.
void LapPlan::setClocks()
{
    const LapChannelSurvey *timer = channelOf(LapRole::CurrentLapTime);
    bool usesTimer = false;
    for (Lap &lap : laps) {
        const bool isFirst = &lap == &laps.front();
        const auto begun = timer ? timer->heldAt(middleOf(lap)) : std::nullopt;
        if (positionChannel && !isFirst) { // marks of the same lines are finer
            const std::optional<double> nearest = nearestMark(clues.marks, lap.line);
            if (nearest)
                lap.line = *nearest;
            else if (begun && std::abs(*begun - lap.line) <= longestTimerDelay)
                lap.line = *begun;
        }
        lap.clock = lap.line;
        if (begun && (isFirst || std::abs(*begun - lap.line) <= nearTime)) {
            usesTimer = true;
            lap.clock = *begun;
            if (isFirst && !lap.isWhole)
                lap.line = *begun;
        }
    }
    if (usesTimer)
        setSource(LapRole::CurrentLapTime, {}, timer);
    else if (areLapsKnown || laps.front().isWhole)
        setSource(LapRole::CurrentLapTime, QStringLiteral("time since the lap began"));
}

void LapPlan::setNumbers()
{
    const LapChannelSurvey *counter = channelOf(LapRole::LapNumber);
    double number = clues.onlyLap ? static_cast<double>(*clues.onlyLap) : 0.0;
    bool usesCounter = false;
    for (Lap &lap : laps) {
        const auto counted = counter ? counter->heldAt(middleOf(lap)) : std::nullopt;
        usesCounter = usesCounter || counted;
        lap.number = counted ? std::round(*counted) : number;
        number = lap.number + 1.0;
    }
    if (usesCounter)
        setSource(LapRole::LapNumber, {}, counter);
    else if (clues.onlyLap)
        setSource(LapRole::LapNumber, QStringLiteral("the header row \"Range\""));
    else if (areLapsKnown)
        setSource(LapRole::LapNumber, QStringLiteral("laps counted from 0"));
}

void LapPlan::setLapTimes()
{
    const auto channels = channelsOf(LapRole::LastLapTime);
    const auto live = std::find_if(channels.begin(), channels.end(), [this](const LapChannelSurvey *survey) {
        return survey->heldAt(clues.lastTime).value_or(0.0) > 0.0;
    });
    const LapChannelSurvey *logged = live == channels.end() ? nullptr : *live;
    bool usesChannel = false;
    bool usesLines = false;
    qsizetype disagreements = 0;
    for (std::size_t i = 0; i < laps.size(); ++i) {
        Lap &lap = laps[i];
        const bool isLast = i + 1 == laps.size();
        const auto said = logged ? logged->heldAt(isLast ? lap.end : middleOf(lap)) : std::nullopt;
        if (i == 0) {
            usesChannel = said && *said > 0.0;
            lap.lastLapTime = usesChannel ? importable(*said) : 0.0;
            continue;
        }
        const double measured = lap.line - laps[i - 1].line;
        // The log need not hold the first lap from its beginning; then the channel knows better.
        const bool isPartial = i == 1 && !laps.front().isWhole;
        if (said && (isPartial || std::abs(*said - measured) <= nearTime)) {
            lap.lastLapTime = *said > 0.0 ? importable(*said) : 0.0;
            usesChannel = true;
        } else {
            lap.lastLapTime = importable(measured);
            disagreements += said ? 1 : 0;
            usesLines = true;
        }
    }
    if (disagreements > 0)
        notes.append(QStringLiteral("%1 differs from the time between the marks by more than %2 s in %3; there "
                                    "the marks count")
                         .arg(quoted(logged->channel().title))
                         .arg(nearTime)
                         .arg(counted(disagreements, QStringLiteral("lap"))));
    const QString between = QStringLiteral("time from one start of a lap to the next");
    if (usesChannel)
        setSource(LapRole::LastLapTime, usesLines ? QLatin1String(", else ") + between : QString(), logged);
    else if (areLapsKnown)
        setSource(LapRole::LastLapTime, between);
}

void LapPlan::setPositions()
{
    if (positionChannel) {
        DrivingSource &source = sources[static_cast<std::size_t>(LapRole::Position)];
        source.kind = DrivingSource::Kind::Channel;
        source.column = positionChannel->channel().column;
        source.scale = *positionChannel->percentScale();
        source.origin = quoted(positionChannel->channel().title);
        if (source.scale != 1.0)
            source.origin += QStringLiteral(" times %1").arg(source.scale);
        const auto unsettled =
            std::count_if(laps.begin(), laps.end(), [](const Lap &lap) { return lap.settled > lap.start; });
        if (unsettled > 0)
            notes.append(
                QStringLiteral("%1 goes back over the line at the start of %2; it is 0 there, so that the import "
                               "begins each lap once")
                    .arg(source.origin, counted(unsettled, QStringLiteral("lap"))));
        return;
    }
    if (!areLapsKnown && !laps.front().isWhole)
        return;
    const auto wayOf = [this](const Lap &lap) {
        return wayChannel ? wayChannel->way().at(lap.end) - wayChannel->way().at(lap.start) : 0.0;
    };
    const auto timeOf = [](const Lap &lap) { return lap.end - lap.start; };
    std::vector<double> ways;
    std::vector<double> times;
    for (const Lap &lap : laps) {
        if (lap.isWhole) {
            ways.push_back(wayOf(lap));
            times.push_back(timeOf(lap));
        }
    }
    // Without a whole lap the longer of the two pieces is taken for one.
    const bool isGuess = ways.empty();
    for (const Lap &lap : laps) {
        if (isGuess) {
            ways = {ways.empty() ? wayOf(lap) : std::max(ways.front(), wayOf(lap))};
            times = {times.empty() ? timeOf(lap) : std::max(times.front(), timeOf(lap))};
        }
    }
    const double usualWay = median(ways);
    const double usualTime = median(times);
    for (Lap &lap : laps) {
        const bool isFirst = &lap == &laps.front();
        lap.isByWay = wayOf(lap) > 0.0;
        const double own = lap.isByWay ? wayOf(lap) : timeOf(lap);
        const double usual = lap.isByWay ? usualWay : usualTime;
        const double length = lap.isWhole ? own : std::max(own, usual);
        const bool countsBack = isFirst && !lap.isWhole; // the lap's end is known, its beginning is not
        const double reference = countsBack ? lap.end : lap.start;
        lap.reference = lap.isByWay ? wayChannel->way().at(reference) : reference;
        lap.percentPer = length > 0.0 ? percentPerLap / length : 0.0;
        lap.base = countsBack ? percentPerLap : 0.0;
    }
    const bool isByWay = std::any_of(laps.begin(), laps.end(), [](const Lap &lap) { return lap.isByWay; });
    setSource(LapRole::Position,
              isByWay ? QStringLiteral("distance within the lap, from %1").arg(quoted(wayChannel->channel().title))
                      : QStringLiteral("time within the lap (the log has no usable distance)"));
}

// A log that has the very channels of the import keeps them as they are, if the import gets the same laps from them.
void LapPlan::copyExactChannels()
{
    if (!positionChannel || !clues.areRowsKept)
        return;
    const auto agrees = [this](const LapChannelSurvey &survey, bool isHeldToTheEnd) {
        for (std::size_t i = 1; i < laps.size(); ++i) {
            const Lap &lap = laps[i];
            const double last = lap.end - 0.5 * clues.period;
            const double asked = isHeldToTheEnd ? std::max(last, lap.start) : lap.start;
            if (survey.heldAt(asked) != survey.heldAt(i + 1 == laps.size() ? lap.end : middleOf(lap)))
                return false;
        }
        return true;
    };
    for (const LapRole role : {LapRole::LapNumber, LapRole::CurrentLapTime, LapRole::LastLapTime}) {
        const auto channels = channelsOf(role);
        if (channels.empty() || !channels.front()->channel().isExact || channels.front()->channel().scale != 1.0 ||
            !agrees(*channels.front(), role != LapRole::LapNumber))
            continue;
        DrivingSource &source = sources[static_cast<std::size_t>(role)];
        source.kind = DrivingSource::Kind::Channel;
        source.column = channels.front()->channel().column;
        source.origin = quoted(channels.front()->channel().title);
    }
}

std::vector<double> LapPlan::starts() const
{
    std::vector<double> times;
    for (std::size_t i = 1; i < laps.size(); ++i)
        times.push_back(laps[i].line);
    return times;
}

std::optional<double> LapPlan::closingTime() const
{
    if (laps.size() > 1 && laps.back().start > clues.lastTime + sameInstant)
        return laps.back().start;
    return std::nullopt;
}

bool LapPlan::isAtLine(double time)
{
    return time < lapAt(time).settled - sameInstant;
}

const LapPlan::Lap &LapPlan::lapAt(double time)
{
    if (time < laps[current].start)
        current = 0;
    while (current + 1 < laps.size() && time >= laps[current + 1].start - sameInstant)
        ++current;
    return laps[current];
}

double LapPlan::position(double time)
{
    const Lap &lap = lapAt(time);
    const double at = lap.isByWay ? wayChannel->way().at(time) : time;
    return std::clamp(lap.base + (at - lap.reference) * lap.percentPer, 0.0, percentPerLap);
}

double LapPlan::currentLapTime(double time)
{
    // The import takes a 0 for a fault of the timer and repairs it; a microsecond is not 0.
    constexpr double smallest = 1.0 / microseconds;
    return std::max(time - lapAt(time).clock, smallest);
}

} // namespace Inspect
