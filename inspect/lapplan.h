#pragma once

// Where the laps of a log begin and what its four driving channels are to hold, worked out from all that the log and
// its user say about it. The order of preference: docs/rewrite.md. The signals of single channels: lapsignals.h.

#include "inspect/drivingchannels.h"
#include "inspect/lapsignals.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <array>
#include <optional>
#include <vector>

namespace Inspect {

/// A driving channel that the user takes from a channel of the log.
struct LapMapping
{
    LapRole role = LapRole::Position; ///< one of the first four
    QString title;                    ///< of the log's channel
    std::optional<double> scale;      ///< from its unit to that of the driving channel
};

/// A channel of the log that says something about laps.
struct LapChannel
{
    LapRole role = LapRole::Position;
    std::size_t column = 0; ///< which of the log's channels it is
    QString title;
    double scale = 1.0;        ///< from its unit to that of the driving channel
    bool isScaleGiven = false; ///< by the user
    bool isMapped = false;     ///< by the user
    bool isExact = false;      ///< it is the very channel that the import looks for
};

/// The channels among those called @p titles, with @p units, that say something about laps, the better ones first.
/// Throws RewriteError where a mapped one is missing.
std::vector<LapChannel> lapChannels(const QStringList &titles, const QStringList &units,
                                    const std::vector<LapMapping> &mappings);

/// What one channel was heard to say in a reading of the whole log.
class LapChannelSurvey
{
public:
    explicit LapChannelSurvey(LapChannel lapChannel);

    void add(double time, double value);

    const LapChannel &channel() const { return source; }
    bool is(LapRole role) const { return source.role == role; }
    /// The lap events of the signal that goes with the channel's role; a distance from the log's start has none.
    const LapEvents &events() const;
    /// A lap number, a last lap time, or for a running time the instant at which its lap began.
    std::optional<double> heldAt(double time) const { return held.at(time); }
    /// Of distances.
    const Odometer &way() const { return odometer; }
    /// Of a position: the factor to percent, found by its range unless it was given; nothing where it never changes or
    /// its range is not that of a position.
    std::optional<double> percentScale() const;

private:
    LapChannel source;
    BeaconSignal beacon;
    CounterSignal counter;
    RestartSignal restart;
    PositionSignal position;         // in the scale that is given, or in percent
    PositionSignal positionFraction; // from 0 to 1
    HeldValue held;
    Odometer odometer;
};

/// Instants, in seconds on the clock of the rows, at which laps begin, as somebody wrote them down.
struct LapMarks
{
    QString origin; ///< for people: "the header row \"Beacon Markers\""
    std::vector<double> seconds;
};

/// All that a plan is made of.
struct LapClues
{
    double firstTime = 0.0; ///< of the rows, in seconds
    double lastTime = 0.0;
    double period = 1.0; ///< between two rows of the source, in seconds
    std::vector<LapChannelSurvey> channels;
    std::optional<LapMarks> userMarks;
    std::vector<LapMarks> marks;      ///< the better ones first
    std::optional<qint64> onlyLap;    ///< the log is this one lap
    std::optional<double> onlyLapEnd; ///< and ends here
    bool areRowsKept = false;         ///< rows are written as they are, so that an exact channel may be copied
};

/// What becomes of one driving channel.
struct DrivingSource
{
    enum class Kind
    {
        Unknown, ///< it is not written
        Channel, ///< its values are those of a channel of the log, sample by sample
        Laps     ///< it follows from the laps
    };
    Kind kind = Kind::Unknown;
    std::optional<std::size_t> column; ///< of the log's channel that it is or follows
    double scale = 1.0;                ///< of its values
    QString origin;                    ///< for people
};

class LapPlan
{
public:
    /// Throws RewriteError where the clues contradict each other or the log.
    explicit LapPlan(LapClues lapClues);

    const DrivingSource &source(LapRole role) const { return sources[static_cast<std::size_t>(role)]; }
    bool isWritten(LapRole role) const { return source(role).kind != DrivingSource::Kind::Unknown; }
    /// For people: what marks the laps, such as "3 marks of the header row \"Beacon Markers\"".
    const QString &origin() const { return lapsOrigin; }
    const QStringList &remarks() const { return notes; }
    /// Where laps begin, but for the first, which begins with the rows. In seconds.
    std::vector<double> starts() const;
    /// A mark after the last row, so that a lap ends with the rows: the import needs one more row to see that.
    std::optional<double> closingTime() const;

    /// Whether the car goes back over the line at @p time or later in the same crossing: a channel's position would
    /// begin further laps there. Rows are asked for in their order.
    bool isAtLine(double time);
    // The value at @p time of a channel that follows from the laps. Rows are asked for in their order.
    double position(double time);
    double currentLapTime(double time);
    double lapNumber(double time) { return lapAt(time).number; }
    /// 0 where it is not known. Read back and cut to milliseconds, as the import does it, this is the lap time.
    double lastLapTime(double time) { return lapAt(time).lastLapTime; }

private:
    struct Lap
    {
        double start = 0.0;   ///< the first row that is not before it is the lap's first
        double settled = 0.0; ///< the car has left the line
        double line = 0.0;    ///< the instant from which the lap's time counts
        double clock = 0.0;   ///< the instant from which the running time counts
        double end = 0.0;
        double number = 0.0;
        double lastLapTime = 0.0;
        bool isWhole = false; ///< from line to line
        // Position: percentPer for each metre or second since reference, plus 100 if it counts back from the lap's end.
        bool isByWay = false;
        double reference = 0.0;
        double percentPer = 0.0;
        double base = 0.0;
    };

    std::vector<const LapChannelSurvey *> channelsOf(LapRole role) const;
    const LapChannelSurvey *channelOf(LapRole role) const;
    void findLaps();
    void takeEvents(const std::vector<LapEvent> &events, const QString &what, const LapChannelSurvey *survey);
    bool takeMarks(const LapMarks &marks, bool isOfUser);
    void setClocks();
    void setNumbers();
    void setLapTimes();
    void setPositions();
    void copyExactChannels();
    void setSource(LapRole role, const QString &origin, const LapChannelSurvey *survey = nullptr);
    double middleOf(const Lap &lap) const { return 0.5 * (lap.start + lap.end); }
    const Lap &lapAt(double time);

    LapClues clues;
    std::array<DrivingSource, 4> sources;
    const LapChannelSurvey *positionChannel = nullptr;
    const LapChannelSurvey *wayChannel = nullptr;
    bool areLapsKnown = false;
    std::vector<Lap> laps; // at least one
    std::size_t current = 0;
    QString lapsOrigin;
    QStringList notes;
};

} // namespace Inspect
