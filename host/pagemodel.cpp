#include "host/pagemodel.h"

#include "host/failure.h"
#include "host/logreader.h"
#include "host/selection.h"
#include "inspect/lapgrid.h"
#include "inspect/signalnames.h"

#include <QtCore/QSet>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

using Inspect::LapAxis;
using Inspect::LapCourse;
using Inspect::LapRole;
using Inspect::Signal;
using Inspect::TimedLap;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;

namespace Host {

namespace {

constexpr std::size_t maxLaps = 1000; // a page of 15 MB
constexpr int minGridPoints = 1000;
constexpr int maxGridPoints = 2000;
constexpr int gridPointsOfAllLaps = 60000; // of long logs each lap gets fewer
constexpr std::size_t maxShownLaps = 8;    // at first: as many as there are colours
constexpr double chartSteps = 300.0;       // that a trace's range is divided into at least
constexpr double minDigits = -24.0;
constexpr double maxDigits = 6.0;
constexpr int millisecondDigits = 3;
constexpr int differenceDigits = 4; // a line of milliseconds would have steps

struct UsualTrace
{
    Signal signal;
    QLatin1String name;
};

constexpr std::array usualTraces{
    UsualTrace{Signal::Speed, QLatin1String("Speed")},       UsualTrace{Signal::Throttle, QLatin1String("Throttle")},
    UsualTrace{Signal::Brake, QLatin1String("Brake")},       UsualTrace{Signal::Gear, QLatin1String("Gear")},
    UsualTrace{Signal::Steering, QLatin1String("Steering")},
};

// A lap of the page and where its samples lie.
struct Entry
{
    const Log *log;
    TimedLap lap;
    std::optional<LapCourse> course;

    const LapHeader &header() const { return lap.lap->header(); }
    bool isOutLap() const { return header().lapKind == KOV::SDK::outLapKind; }
    bool isFinished() const { return lap.isCompleted && !isOutLap(); }
};

// Finds a trace's channel in a lap; its channel is null where there is none.
using FindChannel = std::function<Inspect::SignalChannel(const Lap &)>;

struct Source
{
    PageTrace trace;
    FindChannel find;
};

TimedLap timedLap(const Lap &lap)
{
    const LapHeader &header = lap.header();
    const bool hasTime = header.completed && hasLapTime(header.lapTime);
    return {&lap, hasTime ? std::optional(header.lapTime.msecsSinceStartOfDay()) : std::nullopt, header.completed};
}

// Whether laps of @p log can be told apart by the numbers that the log counts.
bool hasOwnNumbers(const Log &log)
{
    QSet<qint32> numbers;
    for (const auto &lap : log.laps)
        numbers.insert(lap->header().lapNumber);
    return numbers.size() == log.laps.size();
}

// How many digits after the point divide the range from @p lowest to @p highest finely enough for a chart.
int digitsFor(double lowest, double highest)
{
    const double range = highest > lowest ? highest - lowest : std::abs(highest);
    if (!(range > 0.0))
        return 0;
    return static_cast<int>(std::clamp(std::ceil(std::log10(chartSteps / range)), minDigits, maxDigits));
}

// Exports fill the place of a unit that a channel does not have.
QString realUnit(const QString &unit)
{
    return unit == QLatin1String("..") || unit == QLatin1String("-") ? QString() : unit;
}

class ModelBuilder
{
public:
    ModelBuilder(const std::vector<Log> &logs, const PageWishes &wishes)
        : logs(logs)
        , wishes(wishes)
    {
    }

    PageModel build()
    {
        listLaps();
        layAlongAxis();
        findReference();
        for (const Source &source : sources())
            addTrace(source);
        addDifferences();
        if (model.traces.empty())
            note(QStringLiteral(
                "None of the usual channels is in the log, so there are no charts; \"orva-host channels\" "
                "lists what there is, and --traces draws it."));
        setShown();
        addTrack();
        return std::move(model);
    }

private:
    void listLaps();
    void layAlongAxis();
    void describeAxis(const TimedLap &measured);
    void findReference();
    std::vector<Source> sources() const;
    void addTrace(const Source &source);
    void addDifferences();
    void setShown();
    void addTrack();

    std::optional<std::size_t> fastest(const std::function<bool(const Entry &)> &counts) const;
    std::size_t longest() const;
    void note(const QString &text)
    {
        if (!model.notes.contains(text))
            model.notes.append(text);
    }

    const std::vector<Log> &logs;
    const PageWishes &wishes;
    std::vector<Entry> entries; // one for each lap of the model
    LapAxis axis = LapAxis::Time;
    std::optional<std::size_t> reference; // the lap that differences are to
    PageModel model;
};

void ModelBuilder::listLaps()
{
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const Log &log = logs[i];
        const auto letter = static_cast<qsizetype>(i);
        const bool byNumber = hasOwnNumbers(log);
        for (const qsizetype index : wishes.laps.empty() ? selectLaps(log, std::nullopt) : wishes.laps) {
            const Lap &lap = *log.laps[selectLap(log, index)];
            const qsizetype number = byNumber ? lap.header().lapNumber : index;
            entries.push_back({&log, timedLap(lap), {}});
            PageLap pageLap;
            pageLap.log = letter;
            pageLap.index = index;
            pageLap.name =
                (logs.size() > 1 ? logLetter(letter) : QStringLiteral("Lap")) + u' ' + QString::number(number);
            pageLap.isFinished = entries.back().isFinished();
            model.laps.push_back(std::move(pageLap));
        }
    }
    if (entries.size() > maxLaps)
        throw Failure(QStringLiteral("%1 laps are more than the %2 that one page can show; choose some by --laps")
                          .arg(entries.size())
                          .arg(maxLaps));
}

// The entry with the shortest lap time of those that count; an out lap only where there is no other.
std::optional<std::size_t> ModelBuilder::fastest(const std::function<bool(const Entry &)> &counts) const
{
    const auto rank = [](const Entry &entry) { return std::pair(entry.isOutLap(), entry.lap.timeMs.value_or(0)); };
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].lap.timeMs && counts(entries[i]) && (!best || rank(entries[i]) < rank(entries[*best])))
            best = i;
    }
    return best;
}

std::size_t ModelBuilder::longest() const
{
    const auto found = std::max_element(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        return a.lap.lap->size() < b.lap.lap->size();
    });
    return static_cast<std::size_t>(found - entries.begin());
}

void ModelBuilder::layAlongAxis()
{
    std::vector<TimedLap> laps;
    for (const Entry &entry : entries)
        laps.push_back(entry.lap);
    axis = Inspect::commonAxis(laps);

    const auto whole = fastest([](const Entry &entry) { return entry.isFinished(); });
    const TimedLap &measured = entries[axis == LapAxis::Time ? longest() : whole.value_or(longest())].lap;
    describeAxis(measured);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i].course = Inspect::courseOf(entries[i].lap, axis, model.axis.length);
        model.laps[i].isDrawn = entries[i].course.has_value();
        if (!model.laps[i].isDrawn)
            note(QStringLiteral("%1 cannot be drawn: the car does not move in it.").arg(model.laps[i].name));
    }
    const auto budget = gridPointsOfAllLaps / static_cast<long long>(entries.size());
    model.points = static_cast<int>(
        std::clamp<long long>(std::min<long long>(laps[longest()].lap->size(), budget), minGridPoints, maxGridPoints));
}

void ModelBuilder::describeAxis(const TimedLap &measured)
{
    model.axis.length = Inspect::axisLength(measured, axis);
    const QString length = QString::number(std::lround(model.axis.length));
    switch (axis) {
    case LapAxis::LapDistance:
        model.axis.name = QStringLiteral("Lap distance");
        model.axis.unit = QStringLiteral("m");
        if (model.axis.length <= 0.0) {
            model.axis.length = 100.0;
            model.axis.unit = QStringLiteral("%");
        } else if (Inspect::findSignal(*measured.lap, LapRole::LapDistance).channel ||
                   Inspect::findSignal(*measured.lap, LapRole::LogDistance).channel) {
            note(QStringLiteral("Lap length: %1 m, by the log's distance channel.").arg(length));
        } else {
            note(QStringLiteral("Lap length: %1 m, by speed and time.").arg(length));
        }
        break;
    case LapAxis::Distance:
        model.axis.name = QStringLiteral("Distance");
        model.axis.unit = QStringLiteral("m");
        note(QStringLiteral("There is no lap distance, so laps are laid along the distance driven."));
        break;
    case LapAxis::Time:
        model.axis.name = QStringLiteral("Time");
        model.axis.unit = QStringLiteral("s");
        note(QStringLiteral("There is neither a lap distance nor a distance, so laps are laid along the time, and "
                            "there is no time difference."));
        break;
    }
    constexpr double shortAxis = 100.0;
    model.axis.digits = model.axis.length < shortAxis || model.axis.unit == QLatin1String("%") ? 1 : 0;
}

void ModelBuilder::findReference()
{
    const auto hasTimes = [](const Entry &entry) {
        return entry.course && entry.course->hasTimes && entry.course->beginsAtLine && entry.course->endSeconds;
    };
    reference = fastest(hasTimes);
    for (std::size_t i = 0; !reference && i < entries.size(); ++i) { // no lap times: the first whole lap
        if (hasTimes(entries[i]) && entries[i].isFinished())
            reference = i;
    }
    if (const auto best = fastest([](const Entry &) { return true; })) {
        model.laps[*best].isBest = true;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries[i].lap.timeMs && entries[i].isFinished())
                model.laps[i].behindMs = *entries[i].lap.timeMs - *entries[*best].lap.timeMs;
        }
    }
}

std::vector<Source> ModelBuilder::sources() const
{
    std::vector<Source> result;
    for (const UsualTrace &usual : usualTraces) {
        if (!wishes.traces.isEmpty())
            break;
        Source source;
        source.trace.name = usual.name;
        source.trace.isStepped = usual.signal == Signal::Gear;
        source.find = [signal = usual.signal](const Lap &lap) { return Inspect::findSignal(lap, signal); };
        result.push_back(std::move(source));
    }
    for (const QString &name : wishes.traces) {
        const auto hasName = [&name](const Entry &entry) { return findChannel(*entry.lap.lap, name) != nullptr; };
        const auto owner = std::find_if(entries.begin(), entries.end(), hasName);
        if (owner == entries.end())
            checkNames(logs.front(), selectLaps(logs.front(), std::nullopt), {name});
        Source source;
        source.trace.name = name;
        source.trace.isStepped =
            owner != entries.end() && Inspect::findSignal(*owner->lap.lap, Signal::Gear).name == name;
        source.find = [name](const Lap &lap) { return Inspect::SignalChannel{name, findChannel(lap, name)}; };
        result.push_back(std::move(source));
    }
    return result;
}

void ModelBuilder::addTrace(const Source &source)
{
    PageTrace trace = source.trace;
    std::vector<std::vector<double>> columns(entries.size());
    QStringList names;
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const Inspect::SignalChannel found = source.find(*entries[i].lap.lap);
        if (!found.channel || !entries[i].course)
            continue;
        const QString unit = trace.isStepped ? QString() : realUnit(found.channel->unit());
        if (trace.unit.isEmpty())
            trace.unit = unit;
        if (!names.contains(found.name))
            names.append(found.name);
        const bool isSame = unit.isEmpty() || unit == trace.unit;
        const auto factor = isSame ? std::optional(1.0) : Inspect::unitFactor(unit, trace.unit);
        if (!factor)
            note(QStringLiteral("%1 is in %2 in one lap and in %3 in another; the numbers are shown as they are.")
                     .arg(trace.name, trace.unit, unit));
        columns[i] = Inspect::valuesOnGrid(*entries[i].course, *found.channel, model.points,
                                           trace.isStepped ? Inspect::Between::Stepped : Inspect::Between::Linear);
        for (double &value : columns[i]) {
            value *= factor.value_or(1.0);
            lowest = std::fmin(lowest, value); // of a number and NaN the number
            highest = std::fmax(highest, value);
        }
    }
    if (lowest > highest)
        return;
    trace.digits = trace.isStepped ? 0 : digitsFor(lowest, highest);
    if (names != QStringList(trace.name))
        trace.source = names.join(QStringLiteral(", "));
    model.traces.push_back(std::move(trace));
    for (std::size_t i = 0; i < entries.size(); ++i)
        model.laps[i].values.push_back(std::move(columns[i]));
}

// The second trace, below the one that matters most.
void ModelBuilder::addDifferences()
{
    const auto hasTimes = [](const Entry &entry) { return entry.course && entry.course->hasTimes; };
    if (!reference || std::count_if(entries.begin(), entries.end(), hasTimes) < 2)
        return;
    const std::size_t place = std::min<std::size_t>(1, model.traces.size());
    PageTrace trace;
    trace.name = QStringLiteral("Time difference");
    trace.unit = QStringLiteral("s");
    trace.source = QStringLiteral("compared with %1; above zero is later").arg(model.laps[*reference].name);
    trace.digits = differenceDigits;
    trace.shownDigits = millisecondDigits;
    trace.isSigned = true;
    model.traces.insert(model.traces.begin() + static_cast<std::ptrdiff_t>(place), std::move(trace));

    const std::vector<double> referenceSeconds = Inspect::secondsOnGrid(*entries[*reference].course, model.points);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        std::vector<double> column;
        if (hasTimes(entries[i]))
            column = Inspect::differences(Inspect::secondsOnGrid(*entries[i].course, model.points), referenceSeconds);
        else if (entries[i].lap.timeMs && entries[i].course)
            note(QStringLiteral("%1 has no time difference: its clock and its lap time contradict each other.")
                     .arg(model.laps[i].name));
        auto &values = model.laps[i].values;
        values.insert(values.begin() + static_cast<std::ptrdiff_t>(place), std::move(column));
    }
}

// Of one log the fastest laps, of several the fastest of each; where none is whole, the longest.
void ModelBuilder::setShown()
{
    const auto rank = [this](std::size_t i) { // the smaller the better
        const Entry &entry = entries[i];
        constexpr int never = std::numeric_limits<int>::max();
        return entry.isFinished() ? std::tuple(0, entry.lap.timeMs.value_or(never), 0LL)
                                  : std::tuple(1, never, -entry.lap.lap->size());
    };
    bool isLimited = false;
    for (std::size_t log = 0; log < logs.size(); ++log) {
        std::vector<std::size_t> order;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (model.laps[i].isDrawn && model.laps[i].log == static_cast<qsizetype>(log))
                order.push_back(i);
        }
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return rank(a) < rank(b); });
        const auto finished =
            std::count_if(order.begin(), order.end(), [&](std::size_t i) { return entries[i].isFinished(); });
        const auto wanted = std::max<std::size_t>(static_cast<std::size_t>(finished), 1);
        const std::size_t shown = std::min({wanted, logs.size() > 1 ? 1 : maxShownLaps, order.size()});
        isLimited = isLimited || shown < wanted;
        for (std::size_t i = 0; i < shown; ++i)
            model.laps[order[i]].isFastest = true;
    }
    for (PageLap &lap : model.laps)
        lap.isShown = lap.isFastest || (lap.isDrawn && !wishes.laps.empty());
    if (isLimited && wishes.laps.empty())
        note(logs.size() > 1 ? QStringLiteral("At first the fastest lap of each log is shown.")
                             : QStringLiteral("At first the %1 fastest laps are shown.").arg(maxShownLaps));
}

void ModelBuilder::addTrack()
{
    std::vector<std::size_t> order{reference.value_or(longest())};
    for (std::size_t i = 0; i < entries.size(); ++i)
        order.push_back(i);
    for (const std::size_t i : order) {
        const Entry &entry = entries[i];
        const auto positions = Inspect::findPositions(*entry.lap.lap);
        if (!positions || !entry.course)
            continue;
        PageTrack track;
        track.lap = i;
        track.beginsAtLine = axis == LapAxis::LapDistance;
        track.points = Inspect::trackOnGrid(*entry.course, *positions, model.points);
        if (const auto speed = Inspect::findSignal(*entry.lap.lap, Signal::Speed).channel) {
            track.speeds = Inspect::valuesOnGrid(*entry.course, *speed, model.points, Inspect::Between::Linear);
            track.speedUnit = speed->unit();
        }
        model.track = std::move(track);
        return;
    }
}

} // namespace

PageModel pageModel(const std::vector<Log> &logs, const PageWishes &wishes)
{
    return ModelBuilder(logs, wishes).build();
}

QString logLetter(qsizetype log)
{
    constexpr qsizetype letters = 26;
    QString text;
    for (qsizetype rest = log; rest >= 0; rest = rest / letters - 1)
        text.prepend(QChar(u'A' + static_cast<char16_t>(rest % letters)));
    return text;
}

} // namespace Host
