#include "host/lapviews.h"

#include "host/exactnumber.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/textformat.h"
#include "host/texttable.h"
#include "inspect/words.h"
#include "sdk/sdk_utils.h"

using KOV::SDK::LapHeader;
using KOV::SDK::Value;
using Side = Host::Column::Side;

namespace Host {

namespace {

constexpr QLatin1String bestMark("best");

QString kindText(qint32 lapKind)
{
    return lapKind == KOV::SDK::outLapKind     ? QStringLiteral("out lap")
           : lapKind == KOV::SDK::laterLapKind ? QStringLiteral("lap")
                                               : orDash(QString());
}

void printFact(const QString &title, const QString &text, Output &output)
{
    constexpr qsizetype titleWidth = 10;
    output.writeText(title.leftJustified(titleWidth) + orDash(printable(text)) + u'\n');
}

QString valueText(const Value &value)
{
    return value.typeId() == QMetaType::Double ? QString::fromLatin1(exactNumber(value.toDouble())) : value.toString();
}

} // namespace

void printLaps(const Log &log, const std::vector<qsizetype> &laps, Output &output)
{
    const LapHeader &first = log.laps.first()->header();
    printFact(QStringLiteral("Venue"), first.venueName, output);
    printFact(QStringLiteral("Vehicle"), first.carInfo.carName, output);
    printFact(QStringLiteral("Driver"), first.carInfo.driverName, output);
    printFact(QStringLiteral("Session"), sessionName(first.session), output);
    printFact(QStringLiteral("Source"), first.carInfo.sourceName, output);
    printFact(QStringLiteral("Channels"), QString::number(channelCount(log.laps)), output);
    output.writeText(QStringLiteral("\n"));

    TextTable table({{QStringLiteral("Index"), Side::Right},
                     {QStringLiteral("Lap"), Side::Right},
                     {QStringLiteral("Kind")},
                     {QStringLiteral("Time"), Side::Right},
                     {QStringLiteral("Samples"), Side::Right},
                     {QStringLiteral("Completed")},
                     {QString()}});
    const auto best = bestLap(log.laps);
    for (const qsizetype index : laps) {
        const auto &lap = log.laps[index];
        const LapHeader &header = lap->header();
        const bool isBest = index == best;
        table.addRow({QString::number(index), QString::number(header.lapNumber), kindText(header.lapKind),
                      lapTimeText(header.lapTime), QString::number(lap->size()),
                      header.completed ? QStringLiteral("yes") : QStringLiteral("no"),
                      isBest ? QString(bestMark) : QString()},
                     isBest);
    }
    table.print(output);
}

void printChannels(const Log &log, qsizetype index, Output &output)
{
    const auto &lap = log.laps[index];
    const auto channels = channelsOf(*lap);
    output.writeText(QStringLiteral("Lap with index %1 (%2, number %3, time %4%5): %6\n\n")
                         .arg(index)
                         .arg(kindText(lap->header().lapKind))
                         .arg(lap->header().lapNumber)
                         .arg(lapTimeText(lap->header().lapTime),
                              index == bestLap(log.laps) ? QLatin1String(", ") + bestMark : QString())
                         .arg(Inspect::counted(std::ssize(channels), QStringLiteral("channel"))));

    TextTable table({{QStringLiteral("Name")},
                     {QStringLiteral("Unit")},
                     {QStringLiteral("Samples"), Side::Right},
                     {QStringLiteral("Valid"), Side::Right},
                     {QStringLiteral("Minimum"), Side::Right},
                     {QStringLiteral("Maximum"), Side::Right},
                     {QString()}});
    for (const NamedChannel &named : channels) {
        const ChannelSummary summary = summaryOf(*named.channel);
        table.addRow({orDash(named.name), orDash(named.channel->unit()), QString::number(summary.samples),
                      QString::number(summary.validSamples),
                      summary.range ? roundedNumber(summary.range->minimum) : orDash(QString()),
                      summary.range ? roundedNumber(summary.range->maximum) : orDash(QString()),
                      named.isCalculated ? QStringLiteral("calculated") : QString()});
    }
    table.print(output);
}

void printSetup(const KOV::SDK::DynamicData &values, Output &output)
{
    if (values.isEmpty())
        return;
    TextTable table({{QStringLiteral("Name")}, {QStringLiteral("Value")}, {QStringLiteral("Unit")}});
    for (const QString &name : values.valueNameList()) {
        const Value value = values.value(name);
        table.addRow({orDash(name), orDash(valueText(value)), value.unit()});
    }
    table.print(output);
}

} // namespace Host
