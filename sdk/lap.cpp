#include "sdk/lap.h"

#include "sdk/sortednames.h"

#include <algorithm>
#include <utility>

namespace KOV::SDK {

void Lap::addSample(const Sample &sample)
{
    const DynamicData &row = sample.dynamicData;
    bool repair = row.size() != static_cast<qint64>(recordedChannels.size());
    for (const auto &[name, channel] : recordedChannels) {
        const Value value = row.value(name);
        if (value.isValid())
            channel->append(value.toDouble());
        else
            repair = true;
    }
    if (!repair)
        return;

    qint32 longest = -1;
    for (const auto &[name, channel] : recordedChannels) {
        if (!row.containsValue(name))
            channel->append(invalidValue);
        longest = std::max(longest, static_cast<qint32>(channel->size()));
    }
    for (const auto &[name, value] : row.asRange()) {
        if (recordedChannels.contains(name))
            continue;
        auto channel = QSharedPointer<Channel>::create();
        channel->setUnit(value.unit());
        channel->reserve(longest);
        channel->append(std::max(longest - 1, 0), invalidValue);
        channel->append(value.toDouble());
        recordedChannels.emplace(name, std::move(channel));
    }
}

QSharedPointer<Channel> Lap::channel(const QString &name) const
{
    const auto entry = recordedChannels.find(name);
    return entry != recordedChannels.end() ? entry->second : nullptr;
}

QSharedPointer<Channel> Lap::calculatedChannel(const QString &name) const
{
    const auto entry = calculatedChannels.find(name);
    return entry != calculatedChannels.end() ? entry->second : nullptr;
}

void Lap::addChannel(QSharedPointer<Channel> channel, const QString &name)
{
    recordedChannels.insert_or_assign(name, std::move(channel));
}

void Lap::addCalculatedChannel(QSharedPointer<Channel> channel, const QString &name)
{
    calculatedChannels.insert_or_assign(name, std::move(channel));
}

void Lap::removeRecordedChannel(const QString &name)
{
    recordedChannels.erase(name);
}

void Lap::removeCalculatedChannel(const QString &name)
{
    calculatedChannels.erase(name);
}

bool Lap::containsRecordedChannel(const QString &name) const
{
    return recordedChannels.contains(name);
}

bool Lap::containsCalculatedChannel(const QString &name) const
{
    return calculatedChannels.contains(name);
}

bool Lap::containsChannel(const QString &name) const
{
    return containsRecordedChannel(name) || containsCalculatedChannel(name);
}

QList<QString> Lap::getAvailableRecordedChannels() const
{
    return sortedNames(recordedChannels);
}

QList<QString> Lap::getAvailableCalculatedChannels() const
{
    return sortedNames(calculatedChannels);
}

long long Lap::size() const
{
    if (!recordedChannels.empty())
        return recordedChannels.begin()->second->size();
    if (!calculatedChannels.empty())
        return calculatedChannels.begin()->second->size();
    return 0;
}

void Lap::clear()
{
    recordedChannels.clear();
    calculatedChannels.clear();
    lapHeader.dynamicData.clear();
}

} // namespace KOV::SDK
