#pragma once

// Internal to the checks: where they collect their findings, and what those of both formats have in common.

#include "inspect/check.h"
#include "inspect/drivingchannels.h"
#include "inspect/sidecar.h"

namespace Inspect {

/// A channel of the log: its name, and where it is.
struct NamedPlace
{
    QString name;
    Place place;
};

/// What marks laps in a log, such as its beacons.
struct LapEvidence
{
    Place place;
    QString text; ///< what it is, as a sentence without its end: "the header names 3 beacon markers"
    qint64 laps = 0;
};

class FindingList
{
public:
    Finding &add(FindingCode code, const Place &place = {});
    bool contains(FindingCode code) const;
    /// All of them in the order of their codes.
    QList<Finding> sorted() const;

    /// Two channels of one name, as @p isSame decides; the import keeps the one at @p keeps.
    void addDuplicate(const NamedPlace &kept, const NamedPlace &dropped);
    /// Channels that are 0 in all laps although the log has them, those in @p except left out.
    void addConstantChannels(const Laps &laps, const QStringList &except);
    /// What the sidecar of the log at @p path says amiss.
    void addSidecar(const QString &path, const Sidecar &sidecar);
    /// The first of @p evidence, the best first, that marks laps where the import cut none of a log that lasts
    /// @p seconds; or that nothing marks any.
    void addUncutLaps(const std::vector<LapEvidence> &evidence, const Laps &laps, double seconds);
    /// Laps of less than a second; @p sampleRate is that of the laps. @p reason is why the import makes such laps of
    /// the log, as sentences.
    void addShortLaps(const Laps &laps, double sampleRate, const Place &place, const QString &reason);

private:
    QList<Finding> findings;
};

/// How many of @p laps last less than a second, which no car drives. The first and the last one do not count: a log may
/// begin just before the line, and end just after it.
qint64 shortLapCount(const Laps &laps, double sampleRate);
/// "3 of 5 laps last less than a second".
QString shortLapsText(qint64 count, const Laps &laps);

/// What to do about a driving channel that has no substitute in the log.
QString missingRemedy();

/// The channel among @p channels that a person would take for the driving channel of @p role, and that is not called so
/// as the import knows it; null where there is none.
const NamedPlace *lookalike(LapRole role, const std::vector<NamedPlace> &channels);

} // namespace Inspect
