// The check of .ld logs: all records of the file against the channels that the import made of them.

#include "inspect/binarylog.h"
#include "inspect/check.h"
#include "inspect/filelook.h"
#include "inspect/findinglist.h"
#include "inspect/lapcounter.h"
#include "inspect/words.h"

#include "ld/lapcutter.h"
#include "ld/ldx.h"
#include "ld/resample.h"

#include <QtCore/QFile>
#include <QtCore/QMap>

#include <algorithm>

namespace Inspect {

namespace {

constexpr int commonRate = 60; // to which the import brings all channels

bool isDropped(const BinaryRecord &record)
{
    return record.passedOver == PassedOver::TypeCode || record.passedOver == PassedOver::NoRate ||
           record.passedOver == PassedOver::SampleWidth;
}

class BinaryCheck
{
public:
    BinaryCheck(const QString &path, const Laps &laps)
        : path(path)
        , laps(laps)
        , log(path)
    {
        for (const BinaryRecord &record : log.records()) {
            places.push_back({record.name, {0, 0, std::ssize(places) + 1, record.name}});
            seconds = std::max(seconds, record.duration());
        }
    }

    CheckResult run()
    {
        sidecar = readSidecar(sidecarPath(path));
        if (log.records().empty())
            addNoRecords();
        else
            judgeRecords();
        list.addSidecar(sidecarPath(path), sidecar);
        judgeSession();
        CheckFacts facts{LogKind::Binary, std::ssize(places), 0, 0.0, seconds, {}};
        if (sidecar.exists)
            facts.sidecar = sidecarPath(path);
        return {facts, list.sorted()};
    }

    // What the records say without their samples.
    QString remark() const
    {
        const auto &records = log.records();
        if (records.empty())
            return QStringLiteral("no channels");
        QStringList reasons;
        const auto dropped = std::count_if(records.begin(), records.end(), isDropped);
        if (2 * dropped >= std::ssize(records))
            reasons.append(QStringLiteral("%1 of %2 channels are stored as %3, which the import does not read")
                               .arg(dropped)
                               .arg(records.size())
                               .arg(std::find_if(records.begin(), records.end(), isDropped)->kindText()));
        QStringList missing;
        for (const DrivingChannel &channel : drivingChannels()) {
            if (!readRecord(channel))
                missing.append(QString(channel.binaryName));
        }
        if (!missing.isEmpty())
            reasons.append(QStringLiteral("no channel %1 that the import reads").arg(listOf(missing)));
        if (const qint64 count = shortLapCount(laps, commonRate); count > 0)
            reasons.append(shortLapsText(count, laps));
        return reasons.join(QLatin1String("; "));
    }

private:
    // The record that the import takes for @p channel; null where there is none.
    const BinaryRecord *readRecord(const DrivingChannel &channel) const
    {
        const auto found =
            std::find_if(log.records().begin(), log.records().end(), [&channel](const BinaryRecord &record) {
                return record.passedOver == PassedOver::No && record.name.toLower() == channel.binaryName;
            });
        return found == log.records().end() ? nullptr : &*found;
    }

    const Place &placeOf(const BinaryRecord &record) const
    {
        return places[static_cast<std::size_t>(&record - log.records().data())].place;
    }

    void addNoRecords()
    {
        Finding &finding = list.add(FindingCode::NoRecords);
        finding.found = log.isListCutOff() ? QStringLiteral("The list of channels lies beyond the end of the file.")
                                           : QStringLiteral("The log lists no channels.");
        finding.read = QStringLiteral("The import finds no laps.");
        finding.remedy = log.isListCutOff()
                             ? QStringLiteral("Copy the log from the logger again; this copy is cut off.")
                             : QStringLiteral("Pick another log; nothing was recorded in this one.");
    }

    void judgeRecords()
    {
        judgeDropped();
        judgeDrivingChannels();
        judgeCounts();
        judgeNames();
        list.addConstantChannels(laps, {});
        judgeLaps();
        judgeShortLaps();
        if (laps.isEmpty() && list.sorted().isEmpty()) {
            Finding &finding = list.add(FindingCode::NoLapsCut);
            finding.found = QStringLiteral("The log has all the channels that laps come from.");
            finding.read = QStringLiteral("The import finds no laps.");
            finding.remedy = QStringLiteral("Run \"orva-host rewrite\" on the log.");
        }
    }

    void judgeDropped()
    {
        const QString noRate = QStringLiteral("no sample rate");
        QMap<QString, QStringList> names; // by kind
        QMap<QString, Place> first;
        for (const BinaryRecord &record : log.records()) {
            if (!isDropped(record))
                continue;
            const QString kind = record.passedOver == PassedOver::NoRate ? noRate
                                                                         : QStringLiteral("%1 (type %2, %3 bytes)")
                                                                               .arg(record.kindText())
                                                                               .arg(quint16{record.header.typeCode})
                                                                               .arg(quint16{record.header.sampleWidth});
            if (!first.contains(kind))
                first.insert(kind, placeOf(record));
            names[kind].append(record.name);
        }
        for (auto kind = names.cbegin(); kind != names.cend(); ++kind) {
            Finding &finding = list.add(FindingCode::RecordsDropped, first.value(kind.key()));
            finding.count = kind->size();
            finding.channels = *kind;
            const bool hasNoRate = kind.key() == noRate;
            const QString verb = kind->size() == 1
                                     ? (hasNoRate ? QStringLiteral("has") : QStringLiteral("is stored as"))
                                     : (hasNoRate ? QStringLiteral("have") : QStringLiteral("are stored as"));
            finding.found = QStringLiteral("%1 of %2 channels %3 %4: %5.")
                                .arg(kind->size())
                                .arg(places.size())
                                .arg(verb, kind.key(), listOf(*kind));
            finding.read = hasNoRate ? QStringLiteral("The import skips channels without a sample rate.")
                                     : QStringLiteral("The import reads only 16-bit and 32-bit integers.");
            finding.remedy =
                hasNoRate ? QStringLiteral("Nothing can be done: without a rate, the times of the samples are unknown.")
                          : QStringLiteral("Run \"orva-host rewrite\" on the log: it also reads floating point.");
        }
    }

    void judgeDrivingChannels()
    {
        for (const DrivingChannel &channel : drivingChannels()) {
            const QString name(channel.binaryName);
            const bool isCutting = channel.role == LapRole::Position || channel.role == LapRole::LapNumber;
            const BinaryRecord *record = readRecord(channel);
            const qint64 samples = record ? resampledLength(record->claimedSamples(), record->rate(), commonRate) : 0;
            if (record && (!isCutting || samples >= ldMinSamples))
                continue;
            Finding &finding =
                list.add(isCutting ? FindingCode::NoLapChannel : FindingCode::MissingChannel, {0, 0, 0, name});
            finding.channels = {name};
            finding.read = QStringLiteral("Without it %1.").arg(channel.binaryAbsence);
            finding.remedy = missingRemedy();
            if (record) {
                finding.place = placeOf(*record);
                finding.found =
                    QStringLiteral("The channel %1 holds only %2; at least %3 are needed at 60 per second.")
                        .arg(quoted(record->name), counted(record->claimedSamples(), QStringLiteral("sample")))
                        .arg(ldMinSamples);
                continue;
            }
            const auto dropped =
                std::find_if(log.records().begin(), log.records().end(), [&name](const BinaryRecord &other) {
                    return isDropped(other) && other.name.toLower() == name;
                });
            if (dropped != log.records().end()) {
                finding.place = placeOf(*dropped);
                finding.found = QStringLiteral("The channel %1 is there, but as %2.")
                                    .arg(quoted(dropped->name), dropped->kindText());
                continue;
            }
            finding.found = QStringLiteral("No channel is called %1.").arg(quoted(name));
            const NamedPlace *candidate = lookalike(channel.role, places);
            if (!candidate)
                continue;
            finding.remedy = QStringLiteral("See \"looks-like\" below.");
            Finding &like = list.add(FindingCode::LooksLike, candidate->place);
            like.channels = {candidate->name, name};
            like.found = QStringLiteral("%1, record %2, probably holds what %3 should.")
                             .arg(quoted(candidate->name))
                             .arg(candidate->place.record)
                             .arg(quoted(name));
            like.read = QStringLiteral("The import takes no laps from it.");
            like.remedy = QStringLiteral("Run \"orva-host rewrite\" on the log, which uses it instead.");
        }
    }

    // Records that claim more samples than the file holds, or than the import believes.
    void judgeCounts()
    {
        QStringList unread;
        QStringList cutOff;
        Place firstUnread;
        Place firstCutOff;
        qint64 missing = 0;
        for (const BinaryRecord &record : log.records()) {
            if (record.passedOver != PassedOver::No)
                continue;
            const bool isMissing = !laps.isEmpty() && !laps.first()->containsRecordedChannel(record.name.toLower());
            if (isMissing) {
                if (unread.isEmpty())
                    firstUnread = placeOf(record);
                unread.append(record.name);
            } else if (record.samplesInFile < record.claimedSamples()) {
                if (cutOff.isEmpty())
                    firstCutOff = placeOf(record);
                cutOff.append(record.name);
                missing += record.claimedSamples() - record.samplesInFile;
            }
        }
        if (!unread.isEmpty()) {
            Finding &finding = list.add(FindingCode::ImplausibleCount, firstUnread);
            finding.count = unread.size();
            finding.channels = unread;
            finding.found = QStringLiteral("%1 more samples than a file of %2 bytes can hold: %3.")
                                .arg(unread.size() == 1 ? QStringLiteral("1 channel claims")
                                                        : QStringLiteral("%1 channels claim").arg(unread.size()))
                                .arg(log.fileBytes())
                                .arg(listOf(unread));
            finding.read = QStringLiteral("The import leaves out channels with such counts.");
            finding.remedy = QStringLiteral("Copy the log from the logger again; it is damaged or cut off.");
        }
        if (!cutOff.isEmpty()) {
            Finding &finding = list.add(FindingCode::CutOff, firstCutOff);
            finding.count = missing;
            finding.channels = cutOff;
            finding.found =
                QStringLiteral("The file ends before the samples of %1 do: %2 missing, in %3.")
                    .arg(counted(cutOff.size(), QStringLiteral("channel")),
                         counted(missing, QStringLiteral("sample is"), QStringLiteral("samples are")), listOf(cutOff));
            finding.read = QStringLiteral("Missing samples are read as if a 0 were stored.");
            finding.remedy = QStringLiteral("Copy the log from the logger again, or do without its end.");
        }
        if (log.isListCutOff() || log.isCircular()) {
            Finding &finding = list.add(FindingCode::CutOff, places.back().place);
            finding.found =
                log.isCircular()
                    ? QStringLiteral("The list of channels leads back into itself after record %1.").arg(places.size())
                    : QStringLiteral("The list of channels leads beyond the end of the file after record %1.")
                          .arg(places.size());
            finding.read = QStringLiteral("Channels after that are lost.");
            finding.remedy = QStringLiteral("Copy the log from the logger again.");
        }
    }

    void judgeNames()
    {
        QMap<QString, std::size_t> kept;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const BinaryRecord &record = log.records()[i];
            if (record.passedOver == PassedOver::No)
                kept.insert(record.name.toLower(), i);
            else if (record.passedOver == PassedOver::SameName)
                list.addDuplicate(places[kept.value(record.name.toLower())], places[i]);
        }
    }

    // In the order of preference of a rewriting.
    void judgeLaps()
    {
        std::vector<LapEvidence> evidence;
        const auto addChannels = [&](LapRole role) {
            for (const BinaryRecord &record : log.records()) {
                const OtherName *name = otherName(record.name);
                if (!name || name->role != role || laps.size() > 1 || record.rate() == 0)
                    continue;
                LapCounter counter(*name);
                double index = 0.0;
                for (const float sample : log.samples(record))
                    counter.add(index++ / record.rate(), static_cast<double>(sample));
                evidence.push_back(
                    {placeOf(record),
                     QStringLiteral("The channel %1 restarts or counts up at each lap").arg(quoted(record.name)),
                     counter.laps()});
            }
        };
        addChannels(LapRole::Position);
        const auto marks = std::count_if(sidecar.beacons().begin(), sidecar.beacons().end(),
                                         [this](double time) { return time > 0.0 && time < seconds; });
        evidence.push_back(
            {{}, QStringLiteral("The sidecar has %1").arg(counted(marks, QStringLiteral("lap mark"))), marks + 1});
        for (const LapRole role : {LapRole::Beacon, LapRole::LapNumber, LapRole::LapDistance, LapRole::CurrentLapTime})
            addChannels(role);
        list.addUncutLaps(evidence, laps, seconds);
    }

    void judgeShortLaps()
    {
        const BinaryRecord *counter = readRecord(drivingChannel(LapRole::LapNumber));
        if (!counter)
            return;
        const QString reason =
            counter->rate() < commonRate
                ? QStringLiteral("%1 has %2 samples per second. Brought to %3, it passes through values between two "
                                 "numbers, and the import begins a lap at each.")
                      .arg(quoted(counter->name))
                      .arg(counter->rate())
                      .arg(commonRate)
                : QStringLiteral("%1 rises several times, and the import begins a lap at each rise.")
                      .arg(quoted(counter->name));
        list.addShortLaps(laps, commonRate, placeOf(*counter), reason);
    }

    void judgeSession()
    {
        const QString word = log.head().session;
        if (word.isEmpty() || getSessionFromString(word) != KOV::SDK::Session::UnknownSession)
            return;
        Finding &finding = list.add(FindingCode::UnknownSession);
        finding.found = QStringLiteral("The log calls its session %1.").arg(quoted(word));
        finding.read = QStringLiteral("The session stays unknown.");
        finding.remedy = QStringLiteral("Known are Race, Offline testing, Test, Qualify, Practice and Warmup.");
    }

    QString path;
    const Laps &laps;
    BinaryLog log;
    FindingList list;
    Sidecar sidecar;
    std::vector<NamedPlace> places; // of the records
    double seconds = 0.0;
};

} // namespace

CheckResult checkBinary(const QString &path, const Laps &laps)
{
    return BinaryCheck(path, laps).run();
}

QString remarkOnBinary(const QString &path, const Laps &laps)
{
    return BinaryCheck(path, laps).remark();
}

CheckResult checkOther(const QString &path)
{
    QFile file(path);
    const FileLook look = file.open(QIODevice::ReadOnly) ? lookOf(file.read(fileLookBytes)) : FileLook();
    FindingList list;
    Finding &finding = list.add(FindingCode::NotALog);
    finding.found = look.what.isEmpty() ? QStringLiteral("The file is binary data of an unknown kind.")
                                        : QStringLiteral("The file is %1.").arg(look.what);
    finding.read = QStringLiteral("Nothing is read, as it is neither a text export nor a binary .ld log.");
    finding.remedy = look.what.isEmpty()
                         ? QStringLiteral("Pick the log itself: a text export (.csv) or a binary log (.ld).")
                         : look.remedy;
    return {{}, list.sorted()};
}

} // namespace Inspect
