#include "host/valuetable.h"

#include "host/exactnumber.h"
#include "host/logreader.h"
#include "host/output.h"

#include <algorithm>
#include <array>

namespace Host {

QString quotedIfNeeded(QString name)
{
    const bool needsQuotes =
        std::any_of(name.cbegin(), name.cend(), [](QChar c) { return QStringView(u",\"\r\n").contains(c); });
    return needsQuotes ? u'"' + name.replace(u'"', QLatin1String("\"\"")) + u'"' : name;
}

void printValues(const Log &log, qsizetype index, const QStringList &names, Output &output)
{
    const auto &lap = log.laps[index];
    QStringList header;
    std::vector<QSharedPointer<KOV::SDK::Channel>> channels;
    long long rows = 0;
    for (const QString &name : names) {
        header.append(quotedIfNeeded(name));
        channels.push_back(findChannel(*lap, name));
        rows = std::max(rows, channels.back()->size());
    }
    output.writeText(header.join(u',') + u'\n');

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
