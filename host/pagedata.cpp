#include "host/pagedata.h"

#include "host/pagemodel.h"
#include "host/textformat.h"
#include "host/trackpicture.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cmath>

namespace Host {

namespace {

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr double maxWhole = 9007199254740992.0; // up to here every whole number is exact in a script

void writeText(Json &json, const char *key, const QString &text)
{
    const QByteArray utf8 = printable(text).toUtf8();
    json.Key(key);
    json.String(utf8.constData(), static_cast<rapidjson::SizeType>(utf8.size()));
}

// Whole multiples of the last digit that is shown, each as the difference to the one before: short, and exact.
void writeValues(Json &json, const std::vector<double> &values, int digits)
{
    const double scale = std::pow(10.0, digits);
    qint64 before = 0;
    json.StartArray();
    for (const double value : values) {
        const double scaled = value * scale;
        if (!(std::abs(scaled) < maxWhole)) {
            json.Null();
            continue;
        }
        const qint64 whole = std::llround(scaled);
        json.Int64(whole - before);
        before = whole;
    }
    json.EndArray();
}

void writeLap(Json &json, const PageLap &lap, const PageModel &model)
{
    json.StartObject();
    writeText(json, "name", lap.name);
    json.Key("best");
    json.Bool(lap.isBest);
    json.Key("finished");
    json.Bool(lap.isFinished);
    json.Key("fastest");
    json.Bool(lap.isFastest);
    json.Key("values");
    json.StartArray();
    for (std::size_t i = 0; i < lap.values.size(); ++i) {
        if (lap.values[i].empty())
            json.Null();
        else
            writeValues(json, lap.values[i], model.traces[i].digits);
    }
    json.EndArray();
    json.EndObject();
}

} // namespace

QByteArray pageData(const PageModel &model, const TrackPicture &picture)
{
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    json.StartObject();
    json.Key("axis");
    json.StartObject();
    writeText(json, "name", model.axis.name);
    writeText(json, "unit", model.axis.unit);
    json.Key("length");
    json.Double(model.axis.length);
    json.Key("digits");
    json.Int(model.axis.digits);
    json.EndObject();
    json.Key("points");
    json.Int(model.points);
    json.Key("traces");
    json.StartArray();
    for (const PageTrace &trace : model.traces) {
        json.StartObject();
        writeText(json, "name", trace.name);
        writeText(json, "unit", trace.unit);
        writeText(json, "source", trace.source);
        json.Key("digits");
        json.Int(trace.digits);
        json.Key("shownDigits");
        json.Int(std::max(std::min(trace.digits, trace.shownDigits), 0));
        json.Key("stepped");
        json.Bool(trace.isStepped);
        json.Key("signed");
        json.Bool(trace.isSigned);
        json.EndObject();
    }
    json.EndArray();
    json.Key("laps");
    json.StartArray();
    for (const PageLap &lap : model.laps)
        writeLap(json, lap, model);
    json.EndArray();
    json.Key("track");
    json.StartArray();
    for (const TrackPicture::Spot &spot : picture.spots) {
        if (!spot.isKnown) {
            json.Null();
            continue;
        }
        json.StartArray();
        json.Int(spot.x);
        json.Int(spot.y);
        json.EndArray();
    }
    json.EndArray();
    json.EndObject();
    // "<" occurs within texts only, where this means the same and can begin neither a tag nor a comment.
    return QByteArray(buffer.GetString(), static_cast<qsizetype>(buffer.GetSize())).replace('<', "\\u003c");
}

} // namespace Host
