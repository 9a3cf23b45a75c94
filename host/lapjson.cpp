#include "host/lapjson.h"

#include "host/jsonwriter.h"
#include "host/laps.h"
#include "host/logreader.h"
#include "sdk/sdk_utils.h"

#include <optional>

using KOV::SDK::CarInfo;
using KOV::SDK::DynamicData;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;
using KOV::SDK::Value;

namespace Host {

namespace {

void writeSession(KOV::SDK::Session session, JsonWriter &json)
{
    json.member("session", static_cast<qint32>(session));
    json.member("sessionName", sessionName(session));
}

void writeVariant(const QVariant &value, JsonWriter &json)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
        json.value(value.toDouble());
        break;
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        json.value(value.toLongLong());
        break;
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        json.value(value.toULongLong());
        break;
    case QMetaType::Bool:
        json.value(value.toBool());
        break;
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        json.null();
        break;
    default:
        json.value(value.toString());
    }
}

void writeDynamicData(const DynamicData &values, JsonWriter &json)
{
    json.startObject();
    for (const QString &name : values.valueNameList()) {
        const Value value = values.value(name);
        json.key(name);
        json.startObject();
        json.key("value");
        writeVariant(value, json);
        json.member("unit", value.unit());
        json.endObject();
    }
    json.endObject();
}

void writeCarInfo(const CarInfo &car, JsonWriter &json)
{
    json.startObject();
    json.member("carId", car.carId);
    json.member("sourceName", car.sourceName);
    json.member("pluginName", car.pluginName);
    json.member("carName", car.carName);
    json.member("className", car.className);
    json.member("driverName", car.driverName);
    json.member("teamName", car.teamName);
    json.member("status", static_cast<qint32>(car.status));
    json.member("statusText", carStatusToString(car.status));
    json.member("detailedTelemetry", car.detailedTelemetry);
    json.endObject();
}

std::optional<QString> isoText(const QTime &time)
{
    return time.isValid() ? std::optional(time.toString(Qt::ISODateWithMs)) : std::nullopt;
}

std::optional<QString> isoText(const QDateTime &dateTime)
{
    return dateTime.isValid() ? std::optional(dateTime.toString(Qt::ISODateWithMs)) : std::nullopt;
}

void writeHeader(const LapHeader &header, JsonWriter &json)
{
    json.member("lapNumber", header.lapNumber);
    json.member("lapKind", header.lapKind);
    json.member("completed", header.completed);
    json.member("lapTimeMs",
                hasLapTime(header.lapTime) ? std::optional(header.lapTime.msecsSinceStartOfDay()) : std::nullopt);
    json.member("lapTime", isoText(header.lapTime));
    writeSession(header.session, json);
    json.member("stintLapIndex", header.stintLapIndex);
    json.member("stintNumber", header.stintNumber);
    json.member("lapId", header.lapId.toString(QUuid::WithoutBraces));
    json.member("stintId", header.stintId.toString(QUuid::WithoutBraces));
    json.member("sessionId", header.sessionId.toString(QUuid::WithoutBraces));
    json.member("venueName", header.venueName);
    json.member("dateTime", isoText(header.dateTime));
    json.member("textA", header.textA);
    json.member("textB", header.textB);
    json.key("carInfo");
    writeCarInfo(header.carInfo, json);
    json.key("dynamicData");
    writeDynamicData(header.dynamicData, json);
}

void writeChannel(const NamedChannel &named, bool withValues, JsonWriter &json)
{
    const ChannelSummary summary = summaryOf(*named.channel);
    const auto bound = [&summary](double Range::*which) {
        return summary.range ? std::optional((*summary.range).*which) : std::nullopt;
    };
    json.startObject();
    json.member("name", named.name);
    json.member("unit", named.channel->unit());
    json.member("calculated", named.isCalculated);
    json.member("samples", summary.samples);
    json.member("validSamples", summary.validSamples);
    json.member("minimum", bound(&Range::minimum));
    json.member("maximum", bound(&Range::maximum));
    if (withValues) {
        json.key("values");
        json.samples(named.channel->samples());
    }
    json.endObject();
}

// The channels of @p lap that the view shows: for samples, those of @p names (of all names if there are none), without
// the calculated ones that a recorded channel hides.
std::vector<NamedChannel> shownChannels(const Lap &lap, JsonDetail detail, const QStringList &names)
{
    std::vector<NamedChannel> channels = channelsOf(lap);
    if (detail == JsonDetail::Values)
        std::erase_if(channels, [&](const NamedChannel &named) {
            return (named.isCalculated && lap.containsRecordedChannel(named.name)) ||
                   (!names.isEmpty() && !names.contains(named.name));
        });
    return channels;
}

void writeLap(const Lap &lap, qsizetype index, bool isBest, JsonDetail detail, const QStringList &names,
              JsonWriter &json)
{
    json.startObject();
    json.member("index", index);
    json.member("best", isBest);
    json.member("samples", lap.size());
    writeHeader(lap.header(), json);
    if (detail != JsonDetail::Headers) {
        json.key("channels");
        json.startArray();
        for (const NamedChannel &named : shownChannels(lap, detail, names))
            writeChannel(named, detail == JsonDetail::Values, json);
        json.endArray();
    }
    json.endObject();
}

} // namespace

void printLapsJson(const char *command, const Log &log, const std::vector<qsizetype> &laps, JsonDetail detail,
                   const QStringList &names, Output &output)
{
    const LapHeader &first = log.laps.first()->header();
    const auto best = bestLap(log.laps);
    JsonWriter json(output);
    json.startObject();
    json.member("command", QLatin1String(command));
    json.member("file", log.path);
    json.member("venueName", first.venueName);
    json.member("carName", first.carInfo.carName);
    json.member("driverName", first.carInfo.driverName);
    writeSession(first.session, json);
    json.member("sourceName", first.carInfo.sourceName);
    json.member("channelCount", channelCount(log.laps));
    json.member("lapCount", log.laps.size());
    json.member("bestLap", best);
    json.key("laps");
    json.startArray();
    for (const qsizetype index : laps)
        writeLap(*log.laps[index], index, index == best, detail, names, json);
    json.endArray();
    json.endObject();
    json.end();
}

void printSetupJson(const QString &path, const DynamicData &values, Output &output)
{
    JsonWriter json(output);
    json.startObject();
    json.member("command", QLatin1String("setup"));
    json.member("file", path);
    json.key("setup");
    writeDynamicData(values, json);
    json.endObject();
    json.end();
}

} // namespace Host
