#include "host/checkviews.h"

#include "host/jsonwriter.h"
#include "host/output.h"
#include "host/textformat.h"
#include "inspect/check.h"
#include "inspect/words.h"

#include <QtCore/QFileInfo>

#include <optional>

using Inspect::CheckFacts;
using Inspect::Finding;
using Inspect::LogKind;
using Inspect::Place;

namespace Host {

namespace {

// Words of @p text in lines that begin with @p indent.
QString wrapped(const QString &text, const QString &indent)
{
    constexpr qsizetype maxWidth = 80;
    QString lines;
    QString line = indent;
    for (const QString &word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (line != indent && displayWidth(line) + 1 + displayWidth(word) > maxWidth) {
            lines += line + u'\n';
            line = indent;
        }
        line += (line == indent ? QString() : QStringLiteral(" ")) + word;
    }
    return lines + line + u'\n';
}

QString factsText(const CheckFacts &facts, const Laps &laps)
{
    if (facts.kind == LogKind::Other)
        return QStringLiteral("Not a log.");
    QString text = facts.kind == LogKind::Text ? QStringLiteral("Text export: ") : QStringLiteral("Binary .ld log: ");
    text += Inspect::counted(facts.channels, QStringLiteral("channel"));
    if (facts.kind == LogKind::Text)
        text += QLatin1String(", ") + Inspect::counted(facts.rows, QStringLiteral("row"));
    if (facts.sampleRate > 0.0)
        text += QLatin1String(" at ") + roundedNumber(facts.sampleRate) + QLatin1String(" per second");
    text += QLatin1String(", ") + Inspect::durationText(facts.seconds);
    text += QLatin1String(". Imported: ") + Inspect::counted(laps.size(), QStringLiteral("lap"));
    text += QLatin1String(". Sidecar: ") +
            (facts.sidecar.isEmpty() ? QStringLiteral("none") : QFileInfo(facts.sidecar).fileName()) + u'.';
    return text;
}

QString placeText(const Place &place)
{
    QStringList parts;
    if (place.line > 0)
        parts.append(QStringLiteral("line %1").arg(place.line));
    if (place.column > 0)
        parts.append(QStringLiteral("column %1").arg(place.column));
    if (place.record > 0)
        parts.append(QStringLiteral("record %1").arg(place.record));
    if (!place.channel.isEmpty())
        parts.append(Inspect::quoted(place.channel));
    return parts.join(QLatin1String(", "));
}

QLatin1String severityText(Inspect::Severity severity)
{
    return severity == Inspect::Severity::Error ? QLatin1String("error") : QLatin1String("warning");
}

template <typename Number>
std::optional<Number> positive(Number number)
{
    return number > 0 ? std::optional(number) : std::nullopt;
}

std::optional<QString> notEmpty(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

void writeFinding(const Finding &finding, JsonWriter &json)
{
    json.startObject();
    json.member("code", codeText(finding.code));
    json.member("severity", severityText(severityOf(finding.code)));
    json.member("line", positive(finding.place.line));
    json.member("column", positive(finding.place.column));
    json.member("record", positive(finding.place.record));
    json.member("channel", notEmpty(finding.place.channel));
    json.member("count", finding.count);
    json.key("channels");
    json.startArray();
    for (const QString &name : finding.channels)
        json.value(name);
    json.endArray();
    json.member("found", finding.found);
    json.member("read", finding.read);
    json.member("remedy", finding.remedy);
    json.endObject();
}

} // namespace

void printCheck(const Inspect::CheckResult &result, const Laps &laps, Output &output)
{
    output.writeText(wrapped(printable(factsText(result.facts, laps)), QString()));
    if (result.findings.isEmpty()) {
        output.writeText(QStringLiteral("Nothing amiss.\n"));
        return;
    }
    const QString indent(3, u' ');
    int number = 0;
    for (const Finding &finding : result.findings) {
        const QString place = placeText(finding.place);
        output.writeText(
            QStringLiteral("\n%1. %2%3\n")
                .arg(++number)
                .arg(codeText(finding.code), place.isEmpty() ? QString() : QLatin1String(": ") + printable(place)));
        output.writeText(wrapped(printable(finding.found + u' ' + finding.read), indent));
        output.writeText(wrapped(QLatin1String("To do: ") + printable(finding.remedy), indent));
    }
}

void printCheckJson(const QString &path, const Inspect::CheckResult &result, const Laps &laps, Output &output)
{
    const CheckFacts &facts = result.facts;
    JsonWriter json(output);
    json.startObject();
    json.member("command", QLatin1String("check"));
    json.member("file", path);
    json.member("format", facts.kind == LogKind::Text     ? QLatin1String("text")
                          : facts.kind == LogKind::Binary ? QLatin1String("ld")
                                                          : QLatin1String("other"));
    json.member("channelCount", facts.channels);
    json.member("rowCount", facts.kind == LogKind::Text ? std::optional(facts.rows) : std::nullopt);
    json.member("sampleRate", positive(facts.sampleRate));
    json.member("seconds", facts.seconds);
    json.member("lapCount", laps.size());
    json.member("sidecar", notEmpty(facts.sidecar));
    json.key("findings");
    json.startArray();
    for (const Finding &finding : result.findings)
        writeFinding(finding, json);
    json.endArray();
    json.endObject();
    json.end();
}

} // namespace Host
