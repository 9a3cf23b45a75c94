#pragma once

// Internal: reads the map of named values that a car is on a stream (carinfo.h), whoever wrote the stream.

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>

QT_FORWARD_DECLARE_CLASS(QDataStream)

namespace KOV::SDK {

/// Reads a QMap<QString, QVariant> as QDataStream writes one, in the stream's version and byte order.
///
/// A stream may come from a file that a host stored years ago, in a version of that time, or over a network from a
/// program that nobody vouches for. Qt's own reader would then read any registered type, reserve whatever length a list
/// claims, call itself for every level of a nested list, use pointers and open files that the stream names.
///
/// The values convert to texts, numbers and booleans as those that Qt reads do. What converts to none of them is read
/// past and becomes an invalid QVariant; so does a time in a time zone, whose name Qt takes for that of a file. A type
/// whose length the stream does not tell, such as a user's own or one of QtGui, and lists and maps nested more than 32
/// deep end the reading with QDataStream::ReadCorruptData.
///
/// Empty at an error of the stream. An error from before does not stop the reading, and stays.
QMap<QString, QVariant> readVariantMap(QDataStream &stream);

} // namespace KOV::SDK
