#pragma once

// The unit an import delivers: a header (lapheader.h) and named channels (channel.h).

#include "orva_export.h"
#include "sdk/channel.h"
#include "sdk/lapheader.h"
#include "sdk/namemap.h"
#include "sdk/sample.h"

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace KOV::SDK {

/// A lap's header and its channels by name, in two separate name spaces: recorded ones come from the log, calculated
/// ones are derived from others.
///
/// A lap shares its channels and never copies samples: a copied lap holds the same Channel objects. All recorded
/// channels have one length: addSample ensures that, and callers of addChannel have to.
/// Not synchronised: filled by one thread, and handed over when finished.
class ORVA_EXPORT Lap
{
public:
    LapHeader &header() { return lapHeader; }
    const LapHeader &header() const { return lapHeader; }

    /// Appends one row: a value to each recorded channel.
    ///
    /// The first row makes the channels, units included. Later, a channel that the row lacks gets invalidValue, and a
    /// name that is new gets a channel whose earlier samples are invalidValue; a known channel keeps its first unit.
    /// Values go through QVariant::toDouble, so what is not a number becomes 0.0. The usual row, with the names of the
    /// row before, costs one look-up and one append per channel. A row must hold valid variants only: an invalid one
    /// begins a new channel with 0.0, and leaves a known one a sample shorter than the lap's others.
    /// At most 2^31 - 1 rows.
    void addSample(const Sample &sample);

    /// The recorded channel @p name, or null.
    QSharedPointer<Channel> channel(const QString &name) const;
    /// The calculated channel @p name, or null.
    QSharedPointer<Channel> calculatedChannel(const QString &name) const;
    // Add or replace a channel, which is not null. Its length is not checked against the others.
    void addChannel(QSharedPointer<Channel> channel, const QString &name);
    void addCalculatedChannel(QSharedPointer<Channel> channel, const QString &name);
    void removeRecordedChannel(const QString &name);
    void removeCalculatedChannel(const QString &name);
    bool containsRecordedChannel(const QString &name) const;
    bool containsCalculatedChannel(const QString &name) const;
    bool containsChannel(const QString &name) const;
    /// All recorded names, ascending by UTF-16 code unit.
    QList<QString> getAvailableRecordedChannels() const;
    QList<QString> getAvailableCalculatedChannels() const;

    /// Number of samples: the length of any recorded channel, or of any calculated one if there are no recorded ones.
    long long size() const;
    /// Whether the lap has no channels; a lap with channels of length 0 is not empty.
    bool isEmpty() const { return recordedChannels.empty() && calculatedChannels.empty(); }
    /// Drops all channels and the header's dynamicData. The rest of the header stays for the next lap.
    void clear();

private:
    using ChannelMap = NameMap<QSharedPointer<Channel>>;

    LapHeader lapHeader;
    ChannelMap recordedChannels;
    ChannelMap calculatedChannels;
};

} // namespace KOV::SDK
