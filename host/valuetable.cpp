#include "host/valuetable.h"

#include "host/exactnumber.h"
#include "host/logreader.h"
#include "host/output.h"
#include "host/platform.h"
#include "host/textformat.h"

#include <algorithm>
#include <array>

namespace Host {

namespace {

QString quotedIfNeeded(QString name)
{
    const bool needsQuotes =
        std::any_of(name.cbegin(), name.cend(), [](QChar c) { return QStringView(u",\"\r\n").contains(c); });
    return needsQuotes ? u'"' + name.replace(u'"', QLatin1String("\"\"")) + u'"' : name;
}

} // namespace

QString headerLine(const QStringList &names)
{
    const bool isTerminal = isOutputTerminal();
    QStringList fields;
    for (const QString &name : names)
        fields.append(quotedIfNeeded(isTerminal ? printable(name) : name));
    return fields.join(u',') + u'\n';
}

void printValues(const Log &log, qsizetype index, const QStringList &names, Output &output)
{
    const auto &lap = log.laps[index];
    std::vector<QSharedPointer<KOV::SDK::Channel>> channels;
    long long rows = 0;
    for (const QString &name : names) {
        channels.push_back(findChannel(*lap, name));
        rows = std::max(rows, channels.back()->size());
    }
    output.writeText(headerLine(names));

    QByteArray line;
    std::array<char, maxNumberLength> number{};
    for (long long row = 0; row < rows; ++row) {
        line.clear();
        for (const auto &channel : channels) {
            if (row < channel->size() && channel->isValid(row))
                line.append(number.data(), writeExactNumber(number.data(), channel->value(row)) - number.data());
            line += ',';
        }
        line.back() = '\n';
        output.write(line);
    }
}

} // namespace Host
