#include "host/page.h"

#include "host/logreader.h"
#include "host/pagedata.h"
#include "host/pagemodel.h"
#include "host/textformat.h"
#include "host/trackpicture.h"
#include "sdk/sdk_utils.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QSet>

#include <cmath>

using KOV::SDK::LapHeader;

namespace Host {

namespace {

QByteArray resource(const QString &name)
{
    QFile file(QStringLiteral(":/page/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A file of the library without the comment by which browsers look for its sources.
QByteArray libraryFile(const QString &name)
{
    constexpr qsizetype commentSign = 2; // slashes, or a slash and a star
    const QByteArray content = resource(name);
    const qsizetype map = content.lastIndexOf("# sourceMappingURL=");
    return map < commentSign ? content : content.first(map - commentSign);
}

QByteArray hashOf(const QByteArray &content)
{
    return "'sha256-" + QCryptographicHash::hash(content, QCryptographicHash::Sha256).toBase64() + '\'';
}

QByteArray escaped(const QString &text)
{
    return printable(text).toHtmlEscaped().toUtf8();
}

QByteArray element(const char *name, const QByteArray &attributes, const QByteArray &content)
{
    return '<' + QByteArray(name) + (attributes.isEmpty() ? "" : ' ' + attributes) + '>' + content + "</" + name + '>';
}

// Puts @p values in the places that @p text names in double braces. What is put in is not looked at again.
QByteArray filled(const QByteArray &text, const QHash<QByteArray, QByteArray> &values)
{
    QByteArray result;
    qsizetype position = 0;
    while (true) {
        const qsizetype open = text.indexOf("{{", position);
        const qsizetype close = text.indexOf("}}", open);
        if (open < 0 || close < 0)
            return result + text.mid(position);
        result += text.mid(position, open - position) + values.value(text.mid(open + 2, close - open - 2));
        position = close + 2;
    }
}

QString fileName(const Log &log)
{
    return QFileInfo(log.path).fileName();
}

QString defaultTitle(const std::vector<Log> &logs)
{
    QStringList drivers;
    for (const Log &log : logs)
        drivers << log.laps.first()->header().carInfo.driverName;
    drivers.removeAll(QString());
    drivers.removeDuplicates();
    QStringList parts{logs.front().laps.first()->header().venueName, drivers.join(QStringLiteral(", "))};
    parts.removeAll(QString());
    return parts.isEmpty() ? fileName(logs.front()) : parts.join(QStringLiteral(" · "));
}

QByteArray factsTable(const std::vector<Log> &logs)
{
    const bool isOfSeveral = logs.size() > 1;
    const QStringList names{QStringLiteral("Log"),     QStringLiteral("Driver"),  QStringLiteral("Vehicle"),
                            QStringLiteral("Venue"),   QStringLiteral("Session"), QStringLiteral("Source"),
                            QStringLiteral("Best lap")};
    QByteArray head;
    for (const QString &name : names)
        head += element("th", "scope=\"col\"", escaped(name));
    QByteArray rows;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const LapHeader &header = logs[i].laps.first()->header();
        const auto best = bestLap(logs[i].laps);
        const QString log = fileName(logs[i]);
        const QStringList cells{isOfSeveral ? logLetter(static_cast<qsizetype>(i)) + u' ' + log : log,
                                header.carInfo.driverName,
                                header.carInfo.carName,
                                header.venueName,
                                KOV::SDK::sessionName(header.session),
                                header.carInfo.sourceName,
                                best ? lapTimeText(logs[i].laps[*best]->header().lapTime) : QString()};
        QByteArray row;
        for (qsizetype cell = 0; cell < cells.size(); ++cell)
            row += element("td", "data-label=\"" + escaped(names[cell]) + '"', escaped(orDash(cells[cell])));
        rows += element("tr", {}, row) + '\n';
    }
    return element("table", "class=\"facts\"",
                   element("thead", {}, element("tr", {}, head)) + '\n' + element("tbody", {}, rows));
}

QByteArray differenceText(const std::optional<int> &milliseconds)
{
    constexpr double millisecondsPerSecond = 1000.0;
    return milliseconds.value_or(0) > 0 ? '+' + QByteArray::number(*milliseconds / millisecondsPerSecond, 'f', 3)
                                        : QByteArray();
}

QByteArray lapRow(const Log &log, const PageModel &model, std::size_t number)
{
    const PageLap &lap = model.laps[number];
    const LapHeader &header = log.laps[lap.index]->header();
    const QByteArray box = "<input type=\"checkbox\" value=\"" + QByteArray::number(number) + '"' +
                           (lap.isDrawn ? lap.isShown ? " checked" : "" : " disabled") + '>';
    const char *kind = lap.isBest                               ? "best"
                       : !header.completed                      ? "unfinished"
                       : header.lapKind == KOV::SDK::outLapKind ? "out lap"
                                                                : "";
    QByteArray attributes;
    if (hasLapTime(header.lapTime))
        attributes += "data-ms=\"" + QByteArray::number(header.lapTime.msecsSinceStartOfDay()) + "\" ";
    if (lap.isBest)
        attributes += "class=\"best\"";
    return element("tr", attributes,
                   element("td", {}, element("label", {}, box + ' ' + escaped(lap.name))) +
                       element("td", "class=\"number\"", escaped(lapTimeText(header.lapTime))) +
                       element("td", "class=\"number\"", differenceText(lap.behindMs)) + element("td", {}, kind)) +
           '\n';
}

QByteArray lapsTable(const std::vector<Log> &logs, const PageModel &model)
{
    QByteArray bodies;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        QByteArray rows;
        if (logs.size() > 1) {
            const QString driver = logs[i].laps.first()->header().carInfo.driverName;
            const QByteArray letter = element("b", {}, escaped(logLetter(static_cast<qsizetype>(i))));
            rows += element("tr", {},
                            element("th", "colspan=\"4\" scope=\"rowgroup\"",
                                    letter + escaped(driver.isEmpty() ? fileName(logs[i]) : driver))) +
                    '\n';
        }
        for (std::size_t lap = 0; lap < model.laps.size(); ++lap) {
            if (model.laps[lap].log == static_cast<qsizetype>(i))
                rows += lapRow(logs[i], model, lap);
        }
        bodies += element("tbody", {}, rows) + '\n';
    }
    const auto sorting = [](const char *order, const char *name, const char *hint) {
        return element("button",
                       "type=\"button\" data-sort=\"" + QByteArray(order) + "\" title=\"" + QByteArray(hint) + '"',
                       name);
    };
    const QByteArray head = element("th", "scope=\"col\"", sorting("log", "Lap", "In the order of the log")) +
                            element("th", "scope=\"col\" class=\"number\"", sorting("time", "Time", "Fastest first")) +
                            element("th", "scope=\"col\" class=\"number\"", "Behind") + element("th", {}, {});
    return element("table", {}, element("thead", {}, element("tr", {}, head)) + '\n' + bodies);
}

QByteArray setupCells(const KOV::SDK::Value &value)
{
    return element("td", "class=\"number\"", escaped(orDash(value.toString()))) +
           element("td", "class=\"unit\"", escaped(value.unit()));
}

QByteArray setupSection(const std::vector<Log> &logs)
{
    const QByteArray missing = setupCells({});
    QMap<QString, std::vector<QByteArray>> rows;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const KOV::SDK::DynamicData &values = logs[i].laps[usualLap(logs[i].laps)]->header().dynamicData;
        for (const QString &name : values.valueNameList()) {
            auto &cells = rows[name];
            cells.resize(logs.size(), missing);
            cells[i] = setupCells(values.value(name));
        }
    }
    if (rows.isEmpty())
        return {};
    const bool isOfSeveral = logs.size() > 1;
    QByteArray head = element("th", "scope=\"col\"", "Name");
    for (std::size_t i = 0; i < logs.size(); ++i)
        head += element("th", "scope=\"col\" colspan=\"2\"",
                        isOfSeveral ? escaped(logLetter(static_cast<qsizetype>(i))) : QByteArray("Value"));
    QByteArray body;
    for (auto row = rows.cbegin(); row != rows.cend(); ++row) {
        QByteArray cells = element("td", {}, escaped(row.key()));
        QSet<QByteArray> different;
        for (const QByteArray &cell : row.value()) {
            cells += cell;
            if (cell != missing)
                different.insert(cell);
        }
        body +=
            element("tr", different.size() > 1 ? QByteArrayLiteral("class=\"differs\"") : QByteArray(), cells) + '\n';
    }
    const QByteArray table =
        element("table", {}, element("thead", {}, element("tr", {}, head)) + '\n' + element("tbody", {}, body));
    return element("section", "id=\"setup\"",
                   "\n<h2>Setup</h2>\n" +
                       element("div", isOfSeveral ? "class=\"compared\"" : "class=\"columns\"", table) + '\n');
}

QByteArray mapSection(const PageModel &model, const TrackPicture &picture)
{
    if (picture.svg.isEmpty())
        return {};
    QByteArray content =
        "\n<h2>Track " + element("small", {}, escaped(model.laps[model.track->lap].name)) + "</h2>\n" + picture.svg;
    if (picture.fastest > picture.slowest) {
        const auto speed = [](double value) { return QByteArray::number(std::lround(value)); };
        content += element("p", "class=\"scale\"",
                           speed(picture.slowest) + ' ' + speedScaleSvg() + ' ' + speed(picture.fastest) + ' ' +
                               escaped(model.track->speedUnit)) +
                   '\n';
    }
    return element("section", "id=\"map\"", content);
}

} // namespace

QByteArray pageHtml(const std::vector<Log> &logs, const PageModel &model, const QString &title)
{
    const TrackPicture picture = model.track ? trackPicture(*model.track) : TrackPicture();
    const QByteArray library = libraryFile(QStringLiteral("dygraph.min.js"));
    const QByteArray synchronizer = libraryFile(QStringLiteral("synchronizer.js"));
    const QByteArray script = resource(QStringLiteral("page.js"));
    const QByteArray libraryStyle = libraryFile(QStringLiteral("dygraph.min.css"));
    const QByteArray pageStyle = resource(QStringLiteral("page.css"));
    const QByteArray policy = "default-src 'none'; script-src " + hashOf(library) + ' ' + hashOf(synchronizer) + ' ' +
                              hashOf(script) + "; style-src " + hashOf(libraryStyle) + ' ' + hashOf(pageStyle) +
                              "; base-uri 'none'; form-action 'none'";
    return filled(resource(QStringLiteral("page.html")),
                  {{"policy", policy},
                   {"version", ORVA_VERSION},
                   {"title", escaped(title.isEmpty() ? defaultTitle(logs) : title)},
                   {"licence", resource(QStringLiteral("licence")).replace("--", "- -").trimmed()},
                   {"libraryStyle", libraryStyle},
                   {"pageStyle", pageStyle},
                   {"facts", factsTable(logs)},
                   {"laps", lapsTable(logs, model)},
                   {"map", mapSection(model, picture)},
                   {"notes", escaped(model.notes.join(u' '))},
                   {"setup", setupSection(logs)},
                   {"data", pageData(model, picture)},
                   {"library", library},
                   {"synchronizer", synchronizer},
                   {"script", script}});
}

} // namespace Host
