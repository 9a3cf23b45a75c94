#include "inspect/findinglist.h"

#include "inspect/words.h"

#include <QtCore/QSet>

#include <algorithm>

namespace Inspect {

Finding &FindingList::add(FindingCode code, const Place &place)
{
    Finding finding;
    finding.code = code;
    finding.place = place;
    findings.append(finding);
    return findings.last();
}

bool FindingList::contains(FindingCode code) const
{
    return std::any_of(findings.begin(), findings.end(),
                       [code](const Finding &finding) { return finding.code == code; });
}

QList<Finding> FindingList::sorted() const
{
    QList<Finding> result = findings;
    std::stable_sort(result.begin(), result.end(), [](const Finding &a, const Finding &b) { return a.code < b.code; });
    return result;
}

void FindingList::addDuplicate(const NamedPlace &kept, const NamedPlace &dropped)
{
    Finding &finding = add(FindingCode::DuplicateName, dropped.place);
    const bool isRecord = dropped.place.record > 0;
    const auto spot = [isRecord](const Place &place) {
        return isRecord ? QStringLiteral("record %1").arg(place.record) : QStringLiteral("column %1").arg(place.column);
    };
    finding.found = QStringLiteral("%1 in %2 and %3 in %4 have the same name to the import.")
                        .arg(quoted(dropped.name), spot(dropped.place), quoted(kept.name), spot(kept.place));
    finding.read = QStringLiteral("Only %1 is kept.").arg(spot(kept.place));
    finding.remedy = QStringLiteral("Rename one of the two channels if you need both.");
    finding.channels = {dropped.name, kept.name};
}

void FindingList::addConstantChannels(const Laps &laps, const QStringList &except)
{
    QSet<QString> names;
    qint64 samples = 0;
    for (const auto &lap : laps) {
        samples += lap->size();
        for (const QString &name : lap->getAvailableRecordedChannels())
            names.insert(name);
    }
    if (samples < 2)
        return;
    names.subtract(QSet<QString>(except.begin(), except.end()));
    for (const auto &lap : laps) {
        names.removeIf([&lap](const QString &name) {
            const auto channel = lap->channel(name);
            if (!channel)
                return false;
            const auto all = channel->samples();
            return std::any_of(all.begin(), all.end(), [](double sample) { return sample != 0.0; });
        });
    }
    if (names.isEmpty())
        return;
    Finding &finding = add(FindingCode::ConstantChannel);
    finding.channels = names.values();
    finding.channels.sort();
    finding.count = finding.channels.size();
    finding.place.channel = finding.channels.first();
    finding.found = QStringLiteral("%1 0 from beginning to end: %2.")
                        .arg(finding.count == 1 ? QStringLiteral("1 channel is")
                                                : QStringLiteral("%1 channels are").arg(finding.count),
                             listOf(finding.channels));
    finding.read = QStringLiteral("The import treats zeros like any other value.");
    finding.remedy = QStringLiteral("Check that the sensor was connected, or leave the channel out of the export.");
}

void FindingList::addSidecar(const QString &path, const Sidecar &sidecar)
{
    if (!sidecar.error.isEmpty()) {
        Finding &finding = add(FindingCode::BrokenSidecar, {sidecar.errorLine, 0, 0, {}});
        finding.found = QStringLiteral("The sidecar %1 is broken in line %2: %3.")
                            .arg(quoted(path))
                            .arg(sidecar.errorLine)
                            .arg(sidecar.error);
        finding.read = QStringLiteral("Only what comes before that is read: %1.")
                           .arg(counted(sidecar.items.size(), QStringLiteral("item")));
        finding.remedy = QStringLiteral("Repair the file, or copy it from the logger again.");
    }
    // A ratio has no unit where others have one; a tool that writes no units at all makes texts of all numbers.
    QStringList numbers;
    bool hasUnits = false;
    for (const SidecarItem &item : sidecar.items) {
        bool isNumber = false;
        (void)item.value.toDouble(&isNumber);
        hasUnits = hasUnits || item.unit;
        if (isNumber && !item.unit)
            numbers.append(item.id);
    }
    if (!numbers.isEmpty() && !hasUnits) {
        Finding &finding = add(FindingCode::ItemWithoutUnit);
        finding.count = numbers.size();
        finding.channels = numbers;
        finding.found =
            QStringLiteral("No item of the sidecar %1 has a unit; %2 a number: %3.")
                .arg(quoted(path),
                     numbers.size() == 1 ? QStringLiteral("1 holds") : QStringLiteral("%1 hold").arg(numbers.size()),
                     listOf(numbers));
        finding.read = QStringLiteral("The import keeps texts, since a \"Unit\" is what makes a value a number.");
        finding.remedy =
            QStringLiteral("Add Unit=\"\" to the items that should be numbers, if you want to calculate with them.");
    }
}

void FindingList::addUncutLaps(const std::vector<LapEvidence> &evidence, const Laps &laps, double seconds)
{
    constexpr double longLap = 600.0;
    if (laps.size() > 1)
        return;
    const QString read = laps.isEmpty() ? QStringLiteral("The import finds no laps.")
                                        : QStringLiteral("The import reads one lap of %1.").arg(durationText(seconds));
    const auto best =
        std::find_if(evidence.begin(), evidence.end(), [](const LapEvidence &item) { return item.laps > 1; });
    if (best != evidence.end()) {
        Finding &finding = add(FindingCode::NoLapsCut, best->place);
        finding.found =
            QStringLiteral("%1, which makes %2.").arg(best->text, counted(best->laps, QStringLiteral("lap")));
        finding.read = read;
        finding.remedy = QStringLiteral("Run \"orva-host rewrite\" on the log: it cuts the laps there.");
        finding.count = best->laps;
    } else if (laps.isEmpty() || seconds > longLap) {
        Finding &finding = add(FindingCode::NoLapMarks);
        finding.found = QStringLiteral("Nothing in the log says where a lap begins.");
        finding.read = read;
        finding.remedy =
            QStringLiteral("Give the times at which the car crosses the line to \"orva-host rewrite --laps-at\", or "
                           "export a lap counter, a lap distance or beacon markers too.");
    }
}

void FindingList::addShortLaps(const Laps &laps, double sampleRate, const Place &place, const QString &reason)
{
    const qint64 count = shortLapCount(laps, sampleRate);
    if (count == 0)
        return;
    Finding &finding = add(FindingCode::ShortLaps, place);
    finding.count = count;
    finding.found = shortLapsText(count, laps) + u'.';
    finding.read = reason;
    finding.remedy = QStringLiteral("Run \"orva-host rewrite\" on the log, which makes one lap of these pieces.");
}

qint64 shortLapCount(const Laps &laps, double sampleRate)
{
    return std::count_if(laps.begin(), laps.end(), [&](const auto &lap) {
        return lap != laps.first() && lap != laps.last() && static_cast<double>(lap->size()) < sampleRate;
    });
}

QString shortLapsText(qint64 count, const Laps &laps)
{
    return QStringLiteral("%1 of %2 laps %3 less than a second")
        .arg(count)
        .arg(laps.size())
        .arg(count == 1 ? QStringLiteral("lasts") : QStringLiteral("last"));
}

QString missingRemedy()
{
    return QStringLiteral("Record or export it under this name; \"orva-host rewrite\" can make it from lap marks.");
}

const NamedPlace *lookalike(LapRole role, const std::vector<NamedPlace> &channels)
{
    const NamedPlace *best = nullptr;
    const OtherName *bestName = nullptr;
    for (const NamedPlace &channel : channels) {
        const OtherName *name = otherName(channel.name);
        const bool fits =
            name && (name->role == role || (role == LapRole::Position && name->role == LapRole::LapDistance));
        if (fits && (!best || name < bestName)) { // the table has the better name first
            best = &channel;
            bestName = name;
        }
    }
    return best;
}

} // namespace Inspect
