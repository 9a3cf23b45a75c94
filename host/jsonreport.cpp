#include "host/jsonreport.h"

#include "host/laps.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/selection.h"
#include "host/textformat.h"
#include "sdk/sdk_utils.h"

#include <rapidjson/prettywriter.h>

#include <cmath>
#include <optional>
#include <type_traits>

using KOV::SDK::CarInfo;
using KOV::SDK::DynamicData;
using KOV::SDK::Lap;
using KOV::SDK::LapHeader;
using KOV::SDK::Value;

namespace Host {

namespace {

// Where RapidJSON writes to.
class Sink
{
public:
    using Ch = char; // NOLINT(readability-identifier-naming)

    explicit Sink(Output &output)
        : output(output)
    {
    }

    void Put(char c) { output.write(QByteArrayView(&c, 1)); } // NOLINT(readability-identifier-naming)
    void Flush() {}                                           // NOLINT(readability-identifier-naming)

private:
    Output &output;
};

using JsonWriter = rapidjson::PrettyWriter<Sink>;

rapidjson::SizeType sizeOf(const QByteArray &text)
{
    return static_cast<rapidjson::SizeType>(text.size());
}

void writeName(const QString &name, JsonWriter &json)
{
    const QByteArray text = name.toUtf8();
    json.Key(text.constData(), sizeOf(text));
}

template <typename T>
void write(const T &value, JsonWriter &json)
{
    if constexpr (std::is_same_v<T, bool>) {
        json.Bool(value);
    } else if constexpr (std::is_unsigned_v<T>) {
        json.Uint64(value);
    } else if constexpr (std::is_integral_v<T>) {
        json.Int64(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        const QByteArray text = std::isfinite(value) ? exactNumber(value) : QByteArray("null");
        json.RawValue(text.constData(), static_cast<std::size_t>(text.size()), rapidjson::kNumberType);
    } else {
        const QByteArray text = value.toUtf8();
        json.String(text.constData(), sizeOf(text));
    }
}

template <typename T>
void write(const char *name, const T &value, JsonWriter &json)
{
    json.Key(name);
    write(value, json);
}

// For what may be missing: null then.
template <typename T>
void write(const char *name, const std::optional<T> &value, JsonWriter &json)
{
    json.Key(name);
    if (value)
        write(*value, json);
    else
        json.Null();
}

void writeSession(KOV::SDK::Session session, JsonWriter &json)
{
    write("session", static_cast<qint32>(session), json);
    write("sessionName", sessionName(session), json);
}

void writeVariant(const QVariant &value, JsonWriter &json)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
        write(value.toDouble(), json);
        break;
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        write(value.toLongLong(), json);
        break;
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        write(value.toULongLong(), json);
        break;
    case QMetaType::Bool:
        write(value.toBool(), json);
        break;
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        json.Null();
        break;
    default:
        write(value.toString(), json);
    }
}

void writeDynamicData(const DynamicData &values, JsonWriter &json)
{
    json.StartObject();
    for (const QString &name : values.valueNameList()) {
        const Value value = values.value(name);
        writeName(name, json);
        json.StartObject();
        json.Key("value");
        writeVariant(value, json);
        write("unit", value.unit(), json);
        json.EndObject();
    }
    json.EndObject();
}

void writeCarInfo(const CarInfo &car, JsonWriter &json)
{
    json.StartObject();
    write("carId", car.carId, json);
    write("sourceName", car.sourceName, json);
    write("pluginName", car.pluginName, json);
    write("carName", car.carName, json);
    write("className", car.className, json);
    write("driverName", car.driverName, json);
    write("teamName", car.teamName, json);
    write("status", static_cast<qint32>(car.status), json);
    write("statusText", carStatusToString(car.status), json);
    write("detailedTelemetry", car.detailedTelemetry, json);
    json.EndObject();
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
    write("lapNumber", header.lapNumber, json);
    write("lapKind", header.lapKind, json);
    write("completed", header.completed, json);
    write("lapTimeMs", hasLapTime(header.lapTime) ? std::optional(header.lapTime.msecsSinceStartOfDay()) : std::nullopt,
          json);
    write("lapTime", isoText(header.lapTime), json);
    writeSession(header.session, json);
    write("stintLapIndex", header.stintLapIndex, json);
    write("stintNumber", header.stintNumber, json);
    write("lapId", header.lapId.toString(QUuid::WithoutBraces), json);
    write("stintId", header.stintId.toString(QUuid::WithoutBraces), json);
    write("sessionId", header.sessionId.toString(QUuid::WithoutBraces), json);
    write("venueName", header.venueName, json);
    write("dateTime", isoText(header.dateTime), json);
    write("textA", header.textA, json);
    write("textB", header.textB, json);
    json.Key("carInfo");
    writeCarInfo(header.carInfo, json);
    json.Key("dynamicData");
    writeDynamicData(header.dynamicData, json);
}

void writeSamples(const KOV::SDK::Channel &channel, JsonWriter &json)
{
    json.StartArray();
    for (const double sample : channel.samples()) {
        if (KOV::SDK::isValidValue(sample))
            write(sample, json);
        else
            json.Null();
    }
    json.EndArray();
}

void writeChannel(const NamedChannel &named, bool withValues, JsonWriter &json)
{
    const ChannelSummary summary = summaryOf(*named.channel);
    const auto bound = [&summary](double Range::*which) {
        return summary.range ? std::optional((*summary.range).*which) : std::nullopt;
    };
    json.StartObject();
    write("name", named.name, json);
    write("unit", named.channel->unit(), json);
    write("calculated", named.isCalculated, json);
    write("samples", summary.samples, json);
    write("validSamples", summary.validSamples, json);
    write("minimum", bound(&Range::minimum), json);
    write("maximum", bound(&Range::maximum), json);
    if (withValues) {
        json.Key("values");
        writeSamples(*named.channel, json);
    }
    json.EndObject();
}

void writeLap(const Log &log, qsizetype index, bool isBest, const QStringList &valueNames, JsonWriter &json)
{
    const Lap &lap = *log.laps[index];
    json.StartObject();
    write("index", index, json);
    write("best", isBest, json);
    write("samples", lap.size(), json);
    writeHeader(lap.header(), json);
    json.Key("channels");
    json.StartArray();
    for (const NamedChannel &named : channelsOf(lap)) {
        const bool isShadowed = named.isCalculated && lap.containsRecordedChannel(named.name);
        writeChannel(named, !isShadowed && valueNames.contains(named.name), json);
    }
    json.EndArray();
    json.EndObject();
}

} // namespace

void printJson(const Log &log, const Selection &selection, Output &output)
{
    const LapHeader &first = log.laps.first()->header();
    const auto best = bestLap(log.laps);
    Sink sink(output);
    JsonWriter json(sink);
    json.SetIndent(' ', 2);
    json.SetFormatOptions(rapidjson::kFormatSingleLineArray); // samples by the thousand need not stand one a line
    json.StartObject();
    write("file", log.path, json);
    write("venueName", first.venueName, json);
    write("carName", first.carInfo.carName, json);
    write("driverName", first.carInfo.driverName, json);
    writeSession(first.session, json);
    write("sourceName", first.carInfo.sourceName, json);
    write("channelCount", channelCount(log.laps), json);
    write("lapCount", log.laps.size(), json);
    write("bestLap", best, json);
    json.Key("laps");
    json.StartArray();
    for (const qsizetype index : selection.laps)
        writeLap(log, index, index == best, selection.valueNames, json);
    json.EndArray();
    json.EndObject();
    output.write("\n");
}

} // namespace Host
