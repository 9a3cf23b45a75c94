#include "host/jsonreport.h"

#include "host/jsonwriter.h"
#include "host/logreader.h"
#include "host/selection.h"
#include "sdk/sdk_utils.h"

using KOV::SDK::CarInfo;
using KOV::SDK::DynamicData;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;
using KOV::SDK::Value;

namespace Host {

namespace {

void writeIndex(std::optional<qsizetype> index, JsonWriter &json)
{
    if (index)
        json.integer(*index);
    else
        json.null();
}

void writeSession(KOV::SDK::Session session, JsonWriter &json)
{
    json.name("session").integer(static_cast<qint32>(session));
    json.name("sessionName").string(sessionName(session));
}

void writeVariant(const QVariant &value, JsonWriter &json)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
        json.number(value.toDouble());
        break;
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        json.integer(value.toLongLong());
        break;
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        json.integer(value.toULongLong());
        break;
    case QMetaType::Bool:
        json.boolean(value.toBool());
        break;
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        json.null();
        break;
    default:
        json.string(value.toString());
    }
}

void writeDynamicData(const DynamicData &values, JsonWriter &json)
{
    json.beginObject();
    for (const QString &name : values.valueNameList()) {
        const Value value = values.value(name);
        json.name(name).beginObject();
        json.name("value");
        writeVariant(value, json);
        json.name("unit").string(value.unit());
        json.endObject();
    }
    json.endObject();
}

void writeCarInfo(const CarInfo &car, JsonWriter &json)
{
    json.beginObject();
    json.name("carId").string(car.carId);
    json.name("sourceName").string(car.sourceName);
    json.name("pluginName").string(car.pluginName);
    json.name("carName").string(car.carName);
    json.name("className").string(car.className);
    json.name("driverName").string(car.driverName);
    json.name("teamName").string(car.teamName);
    json.name("status").integer(static_cast<qint32>(car.status));
    json.name("statusText").string(carStatusToString(car.status));
    json.name("detailedTelemetry").boolean(car.detailedTelemetry);
    json.endObject();
}

void writeLapTime(QTime time, JsonWriter &json)
{
    json.name("lapTimeMs");
    if (hasLapTime(time))
        json.integer(time.msecsSinceStartOfDay());
    else
        json.null();
    json.name("lapTime");
    if (time.isValid())
        json.string(time.toString(Qt::ISODateWithMs));
    else
        json.null();
}

void writeHeader(const LapHeader &header, JsonWriter &json)
{
    json.name("lapNumber").integer(header.lapNumber);
    json.name("lapKind").integer(header.lapKind);
    json.name("completed").boolean(header.completed);
    writeLapTime(header.lapTime, json);
    writeSession(header.session, json);
    json.name("stintLapIndex").integer(header.stintLapIndex);
    json.name("stintNumber").integer(header.stintNumber);
    json.name("lapId").string(header.lapId.toString(QUuid::WithoutBraces));
    json.name("stintId").string(header.stintId.toString(QUuid::WithoutBraces));
    json.name("sessionId").string(header.sessionId.toString(QUuid::WithoutBraces));
    json.name("venueName").string(header.venueName);
    json.name("dateTime");
    if (header.dateTime.isValid())
        json.string(header.dateTime.toString(Qt::ISODateWithMs));
    else
        json.null();
    json.name("textA").string(header.textA);
    json.name("textB").string(header.textB);
    json.name("carInfo");
    writeCarInfo(header.carInfo, json);
    json.name("dynamicData");
    writeDynamicData(header.dynamicData, json);
}

void writeChannel(const NamedChannel &named, bool withValues, JsonWriter &json)
{
    const ChannelSummary summary = summaryOf(*named.channel);
    json.beginObject();
    json.name("name").string(named.name);
    json.name("unit").string(named.channel->unit());
    json.name("calculated").boolean(named.isCalculated);
    json.name("samples").integer(summary.samples);
    json.name("validSamples").integer(summary.validSamples);
    json.name("minimum");
    summary.range ? json.number(summary.range->minimum) : json.null();
    json.name("maximum");
    summary.range ? json.number(summary.range->maximum) : json.null();
    if (withValues) {
        json.name("values");
        json.samples(named.channel->samples());
    }
    json.endObject();
}

void writeLap(const Log &log, qsizetype index, bool isBest, const QStringList &valueNames, JsonWriter &json)
{
    const Lap &lap = *log.laps[index];
    json.beginObject();
    json.name("index").integer(index);
    json.name("best").boolean(isBest);
    json.name("samples").integer(lap.size());
    writeHeader(lap.header(), json);
    json.name("channels").beginArray();
    for (const NamedChannel &named : channelsOf(lap)) {
        const bool isShadowed = named.isCalculated && lap.containsRecordedChannel(named.name);
        writeChannel(named, !isShadowed && valueNames.contains(named.name), json);
    }
    json.endArray();
    json.endObject();
}

} // namespace

void printJson(const Log &log, const Selection &selection, Output &output)
{
    const LapHeader &first = log.laps.first()->header();
    const auto best = bestLap(log.laps);
    JsonWriter json(output);
    json.beginObject();
    json.name("file").string(log.path);
    json.name("venueName").string(first.venueName);
    json.name("carName").string(first.carInfo.carName);
    json.name("driverName").string(first.carInfo.driverName);
    writeSession(first.session, json);
    json.name("sourceName").string(first.carInfo.sourceName);
    json.name("channelCount").integer(channelCount(log.laps));
    json.name("lapCount").integer(log.laps.size());
    json.name("bestLap");
    writeIndex(best, json);
    json.name("laps").beginArray();
    for (const qsizetype index : selection.laps)
        writeLap(log, index, index == best, selection.valueNames, json);
    json.endArray();
    json.endObject();
}

} // namespace Host
