#include "inspect/rewriteparts.h"

#include <QtCore/QLocale>
#include <QtCore/QSet>

#include <charconv>
#include <cmath>

namespace Inspect {

namespace {

QString quoted(const QString &title)
{
    return u'"' + title + u'"';
}

QList<QByteArray> cellTexts(const QStringList &texts)
{
    QList<QByteArray> cells;
    for (const QString &text : texts)
        cells.append(cellText(text));
    return cells;
}

} // namespace

std::vector<WrittenColumn> writtenColumns(const QStringList &titles, const QStringList &units, const LapPlan &plan,
                                          const QStringList &taken, QStringList *remarks)
{
    QSet<QString> used;
    const auto take = [&used](const QString &title) {
        const QString name = valueName(title);
        const bool isNew = !used.contains(name);
        used.insert(name);
        return isNew;
    };
    for (const LapRole role : drivingRoles) {
        if (plan.isWritten(role))
            take(drivingChannel(role).title);
    }
    for (const QString &title : taken)
        take(title);

    constexpr qsizetype maxNames = 5; // in a remark
    QStringList renamed;
    QStringList respelled;
    std::vector<WrittenColumn> columns;
    for (qsizetype i = 0; i < titles.size(); ++i) {
        const DrivingChannel *driving = drivingChannelOfTitle(titles[i]);
        if (driving && plan.isWritten(driving->role) &&
            plan.source(driving->role).column == static_cast<std::size_t>(i))
            continue;
        const QString title =
            titles[i].isEmpty() ? QStringLiteral("Column %1").arg(i + 1) : QString::fromUtf8(cellText(titles[i]));
        if (title != titles[i])
            respelled.append(quoted(title));
        QString name = title;
        for (int count = 2; !take(name); ++count)
            name = QStringLiteral("%1 %2").arg(title).arg(count);
        if (name != title)
            renamed.append(
                QStringLiteral("%1 (%2)").arg(quoted(name), units[i].isEmpty() ? QLatin1String("no unit") : units[i]));
        columns.push_back({static_cast<std::size_t>(i), name, units[i]});
    }
    const auto list = [](const QStringList &names) {
        QString text = names.mid(0, maxNames).join(QLatin1String(", "));
        if (names.size() > maxNames)
            text += QStringLiteral(" and %1 more").arg(names.size() - maxNames);
        return text;
    };
    if (!renamed.isEmpty())
        remarks->append(QLatin1String("the import keeps only one of several channels with the same name; renamed: ") +
                        list(renamed));
    if (!respelled.isEmpty())
        remarks->append(
            QLatin1String("titles that were empty, or held commas, quotes or control characters, which this "
                          "format cannot carry, are now: ") +
            list(respelled));
    return columns;
}

void writeColumnRows(ExportWriter &writer, const LapPlan &plan, const QStringList &ownTitles,
                     const QStringList &ownUnits, const std::vector<WrittenColumn> &columns)
{
    QStringList titles;
    QStringList units;
    for (const LapRole role : drivingRoles) {
        if (plan.isWritten(role)) {
            titles.append(drivingChannel(role).title);
            units.append(drivingChannel(role).unit);
        }
    }
    titles += ownTitles;
    units += ownUnits;
    for (const WrittenColumn &column : columns) {
        titles.append(column.title);
        units.append(column.unit);
    }
    writer.writeGap();
    writer.writeLine(cellTexts(titles));
    writer.writeLine(cellTexts(units));
    writer.writeGap();
}

void describeOrigins(const LapPlan &plan, RewriteSummary *summary)
{
    for (std::size_t i = 0; i < drivingRoles.size(); ++i) {
        const DrivingChannel &channel = drivingChannel(drivingRoles[i]);
        summary->origins[i] = {channel.title, channel.unit, plan.source(drivingRoles[i]).origin};
        summary->channels += summary->origins[i].text.isEmpty() ? 0 : 1;
    }
    summary->laps = plan.origin();
    summary->remarks = plan.remarks() + summary->remarks;
}

void writeBeaconMarkers(ExportWriter &writer, const LapPlan &plan)
{
    QStringList marks;
    for (const double start : plan.starts())
        marks.append(QString::number(std::round(start * 1e6) / 1e6, 'f', QLocale::FloatingPointShortest));
    if (!marks.isEmpty())
        writer.writeLine({"Beacon Markers", marks.join(u' ').toLatin1()});
}

QString closingRemark(double time)
{
    return QStringLiteral("the last lap ends after the last row: a row at %1 s with the last values is added, as the "
                          "import takes a lap's time from the rows after it")
        .arg(time, 0, 'f', 3);
}

void DrivingCells::add(ExportWriter &writer, LapRole role, double time)
{
    constexpr int positionDecimals = 4; // a centimetre of ten kilometres
    constexpr int timeDecimals = 3;
    constexpr int shortTimeDecimals = 6; // the first moments of a lap must not read as 0
    switch (role) {
    case LapRole::Position:
        writer.addRounded(plan.position(time), positionDecimals);
        break;
    case LapRole::LapNumber:
        writer.addRounded(plan.lapNumber(time), 0);
        break;
    case LapRole::CurrentLapTime: {
        const double lapTime = plan.currentLapTime(time);
        writer.addRounded(lapTime, lapTime < 0.001 ? shortTimeDecimals : timeDecimals);
        break;
    }
    default:
        if (const double lapTime = plan.lastLapTime(time); lapTime != lastLapTime) {
            std::array<char, ExportWriter::cellRoom> text;
            lastLapTime = lapTime;
            lastLapTimeText.assign(text.data(), std::to_chars(text.data(), text.data() + text.size(), lapTime).ptr);
        }
        writer.addText(lastLapTimeText);
    }
}

LapMarks sidecarMarks(const Sidecar &sidecar)
{
    return {QStringLiteral("the sidecar's beacons"), sidecar.beacons()};
}

} // namespace Inspect
