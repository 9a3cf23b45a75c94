#pragma once

// Internal: reads the map of named values that a car is on a stream (carinfo.h), whoever wrote the stream.

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>

QT_FORWARD_DECLARE_CLASS(QDataStream)

namespace KOV::SDK {

/// Reads a QMap<QString, QVariant> as QDataStream writes one, in the stream's version and byte order.
///
/// A stream may come from a file that a host stored years ago, in the version of that time, or over a network from an
/// unknown program. Qt's own reader trusts it: it reads any registered type, reserves whatever length a list claims,
/// recurses for every level of a nested list, uses pointers and opens files that the stream names.
///
/// The values convert to texts, numbers and booleans as those that Qt reads do. A value that converts to none of these
/// is skipped and becomes an invalid QVariant. So does a time in a time zone, as Qt opens a file by the zone's name,
/// and one of an unknown kind, at which Qt may crash. A type whose length cannot be told from the stream, such as a
/// user's own or one of QtGui, ends the reading with QDataStream::ReadCorruptData; so do lists and maps nested more
/// than 32 deep.
///
/// Empty after an error of the stream. An earlier error does not prevent the reading, and stays.
QMap<QString, QVariant> readVariantMap(QDataStream &stream);

} // namespace KOV::SDK
