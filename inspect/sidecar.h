#pragma once

// What is in the .ldx sidecar: every item with or without a unit, and the markers, which the library does not read.
// Where it lies beside a log: ld/ldx.h.

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>
#include <vector>

namespace Inspect {

struct SidecarItem
{
    QString id; ///< unchanged, also with "CarSetup_"
    QString value;
    std::optional<QString> unit; ///< none where the attribute is missing, which makes the value a text
    qint64 line = 0;
};

struct MarkerGroup
{
    QString name; ///< the attribute "Name", or else "Type"
    bool isBeacons = false;
    std::vector<double> times; ///< in seconds from the start of the log, in file order
};

/// A sidecar's content in file order. Reading ends where the library's does: at 1 MiB, at elements nested more than 64
/// deep, at a tag of more than 16 KiB, and at the first error of the XML.
struct Sidecar
{
    bool exists = false; ///< there is such a file and it could be opened
    QString error;       ///< why reading ended early; empty where it did not
    qint64 errorLine = 0;
    std::optional<QString> sessionWord; ///< the "Value" of the first item with the "Id" "Event"
    QList<SidecarItem> items;           ///< all elements with an "Id" but for "Event" and "Session"
    std::vector<MarkerGroup> markerGroups;

    /// The times of the first group of beacons, in seconds from the start of the log; the first may be 0. Empty where
    /// there is none.
    const std::vector<double> &beacons() const;
};

/// Reads the sidecar at @p path. Re-entrant.
Sidecar readSidecar(const QString &path);

} // namespace Inspect
