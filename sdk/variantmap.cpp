#include "sdk/variantmap.h"

#include <QtCore/QBitArray>
#include <QtCore/QCborValue>
#include <QtCore/QDataStream>
#include <QtCore/QDateTime>
#include <QtCore/QIODevice>
#include <QtCore/QJsonValue>
#include <QtCore/QMetaType>
#include <QtCore/QPoint>
#include <QtCore/QStringList>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace KOV::SDK {

namespace {

constexpr int maximumDepth = 32;
constexpr int float16 = 63; // QMetaType::Float16, which Qt has from 6.5 on

/// What Qt reads: types that convert to a text, a number or a boolean, and some of a few bytes.
constexpr int plainTypes[]{QMetaType::Bool,       QMetaType::Int,     QMetaType::UInt,  QMetaType::LongLong,
                           QMetaType::ULongLong,  QMetaType::Long,    QMetaType::ULong, QMetaType::Short,
                           QMetaType::UShort,     QMetaType::Char,    QMetaType::UChar, QMetaType::SChar,
                           QMetaType::Double,     QMetaType::Float,   float16,          QMetaType::Nullptr,
                           QMetaType::Char16,     QMetaType::Char32,  QMetaType::QChar, QMetaType::QString,
                           QMetaType::QByteArray, QMetaType::QDate,   QMetaType::QTime, QMetaType::QRegularExpression,
                           QMetaType::QUrl,       QMetaType::QLocale, QMetaType::QRect, QMetaType::QRectF,
                           QMetaType::QSize,      QMetaType::QSizeF,  QMetaType::QLine, QMetaType::QLineF,
                           QMetaType::QPoint,     QMetaType::QPointF, QMetaType::QUuid, QMetaType::QCborSimpleType};

/// How streams in the version of Qt 3 number the types; those not listed are QtGui's.
constexpr std::pair<quint32, int> typesOfQt3[]{
    {0, QMetaType::UnknownType}, {1, QMetaType::QVariantMap},  {2, QMetaType::QVariantList},
    {3, QMetaType::QString},     {4, QMetaType::QStringList},  {8, QMetaType::QRect},
    {9, QMetaType::QSize},       {14, QMetaType::QPoint},      {16, QMetaType::Int},
    {17, QMetaType::UInt},       {18, QMetaType::Bool},        {19, QMetaType::Double},
    {26, QMetaType::QDate},      {27, QMetaType::QTime},       {28, QMetaType::QDateTime},
    {29, QMetaType::QByteArray}, {30, QMetaType::QBitArray},   {33, QMetaType::LongLong},
    {34, QMetaType::ULongLong},  {35, QMetaType::QEasingCurve}};

template <typename T>
T read(QDataStream &stream)
{
    T item{};
    stream >> item;
    return item;
}

/// Reads the head of a variant and returns its QMetaType id, or User for a type that Qt Core does not know.
int readType(QDataStream &stream)
{
    constexpr quint32 secondBlockOfQt4 = 128; // Qt 4 had two blocks of numbers, which have been joined since
    constexpr quint32 joinedBy = 97;
    const int version = stream.version();
    const auto number = read<quint32>(stream);
    if (version < QDataStream::Qt_4_0) {
        const auto *const entry = std::find_if(std::begin(typesOfQt3), std::end(typesOfQt3),
                                               [number](const auto &row) { return row.first == number; });
        return entry != std::end(typesOfQt3) ? entry->second : QMetaType::User;
    }
    if (version >= QDataStream::Qt_4_2)
        read<qint8>(stream); // whether it is null, which no conversion asks
    // The number that is followed by the type's name: what Qt Core has added since goes by name.
    const quint32 namedType = version < QDataStream::Qt_5_0   ? 127
                              : version < QDataStream::Qt_6_0 ? 1024
                                                              : quint32{QMetaType::User};
    if (number == namedType) {
        const int type = QMetaType::fromName(read<QByteArray>(stream).constData()).id(); // up to the NUL that ends it
        return type == QMetaType::UnknownType ? QMetaType::User : type;
    }
    const bool isShifted = version < QDataStream::Qt_5_0 && number >= secondBlockOfQt4;
    return static_cast<int>(number - (isShifted ? joinedBy : 0));
}

/// The count of the items that follow.
quint32 readCount(QDataStream &stream)
{
    constexpr quint32 firstMarker = 0xFFFFFFFE; // of a longer count, or of none at all
    const auto count = read<quint32>(stream);
    if (count >= firstMarker)
        stream.setStatus(QDataStream::ReadCorruptData);
    return count;
}

/// Calls @p readItem @p count times, or until the stream has an error. Reserves nothing.
template <typename ReadItem>
void readItems(QDataStream &stream, quint32 count, ReadItem readItem)
{
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        readItem();
}

void skipBitArray(QDataStream &stream)
{
    const quint64 bitCount = stream.version() < QDataStream::Qt_6_0 ? read<quint32>(stream) : read<quint64>(stream);
    quint64 byteCount = bitCount / 8 + (bitCount % 8 != 0 ? 1 : 0);
    while (byteCount > 0 && stream.status() == QDataStream::Ok) {
        const int piece = static_cast<int>(std::min<quint64>(byteCount, std::numeric_limits<int>::max()));
        if (stream.skipRawData(piece) != piece)
            stream.setStatus(QDataStream::ReadPastEnd);
        byteCount -= static_cast<quint64>(piece);
    }
}

/// Qt would read a pointer to a function from the stream, and use it.
void skipEasingCurve(QDataStream &stream)
{
    // Period, amplitude and overshoot of a curve; tension, continuity and bias of a point.
    const auto skipNumbers = [&stream] { readItems(stream, 3, [&stream] { read<qreal>(stream); }); };
    read<quint8>(stream);  // its kind
    read<quint64>(stream); // the pointer
    if (!read<bool>(stream))
        return;
    skipNumbers();
    if (stream.version() < QDataStream::Qt_5_13)
        return;
    readItems(stream, readCount(stream), [&stream] { read<QPointF>(stream); });
    readItems(stream, readCount(stream), [&] {
        read<QPointF>(stream);
        skipNumbers();
    });
}

void skipTimeZone(QDataStream &stream)
{
    if (read<QString>(stream) != QLatin1String("OffsetFromUtc"))
        return;
    read<QString>(stream); // its own name
    read<qint32>(stream);
    read<QString>(stream); // its display name and the short form
    read<QString>(stream);
    read<qint32>(stream); // the territory
    read<QString>(stream);
}

/// Qt takes any number for the kind of a time, and crashes at some and prints a warning at others.
QVariant readDateTime(QDataStream &stream)
{
    const int version = stream.version();
    if (version < QDataStream::Qt_4_0) // there were no kinds
        return read<QDateTime>(stream);
    const auto date = read<QDate>(stream);
    const auto time = read<QTime>(stream);
    const auto kind = read<qint8>(stream);
    const bool hasZones = version >= QDataStream::Qt_5_2;
    if (hasZones && kind == Qt::TimeZone)
        skipTimeZone(stream);
    // Qt 4 and 5.1 had two kinds of local time, one of them unknown and -1, before UTC and an offset.
    const bool isQt4s = !hasZones && version != QDataStream::Qt_5_0;
    if (kind < (isQt4s ? -1 : Qt::LocalTime) || kind > (isQt4s ? 3 : Qt::OffsetFromUTC))
        return {};
    QByteArray bytes;
    QDataStream form(&bytes, QIODevice::ReadWrite);
    form.setVersion(version);
    form << date << time << kind;
    if (hasZones && kind == Qt::OffsetFromUTC)
        form << read<qint32>(stream);
    form.device()->reset();
    return read<QDateTime>(form);
}

QVariant readJsonValue(QDataStream &stream)
{
    switch (read<quint8>(stream)) {
    case QJsonValue::Bool:
        return QJsonValue(read<bool>(stream));
    case QJsonValue::Double:
        return QJsonValue(read<double>(stream));
    case QJsonValue::String:
        return QJsonValue(read<QString>(stream));
    case QJsonValue::Array:
    case QJsonValue::Object:
        read<QByteArray>(stream);
        [[fallthrough]];
    default:
        return {};
    }
}

QVariant readCborValue(QDataStream &stream)
{
    const auto bytes = read<QByteArray>(stream);
    // The top three bits of the first byte say what follows. Arrays, maps and tags could take a hundred times their
    // size in memory, and convert to nothing.
    constexpr int arrays = 4;
    constexpr int tags = 6;
    const int kind = bytes.isEmpty() ? arrays : static_cast<unsigned char>(bytes.front()) >> 5;
    if (kind >= arrays && kind <= tags)
        return {};
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(bytes, &error);
    // Qt crashes when it converts a text that is cut off.
    return error.error == QCborError::NoError ? QVariant::fromValue(value) : QVariant();
}

QVariant readValue(QDataStream &stream, int depth)
{
    const int type = readType(stream);
    switch (type) {
    case QMetaType::UnknownType:
        if (stream.version() < QDataStream::Qt_5_0)
            read<QString>(stream); // a placeholder
        return {};
    case QMetaType::QVariant:
    case QMetaType::QVariantPair:
    case QMetaType::QVariantList:
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        if (depth == maximumDepth)
            break;
        const bool hasKeys = type == QMetaType::QVariantMap || type == QMetaType::QVariantHash;
        const quint32 count = type == QMetaType::QVariant ? 1 : type == QMetaType::QVariantPair ? 2 : readCount(stream);
        readItems(stream, count, [&] {
            if (hasKeys)
                read<QString>(stream);
            readValue(stream, depth + 1);
        });
        return {};
    }
    case QMetaType::QStringList: {
        QStringList texts; // a single one converts to a text
        readItems(stream, readCount(stream), [&] { texts.append(read<QString>(stream)); });
        return texts;
    }
    case QMetaType::QByteArrayList:
        readItems(stream, readCount(stream), [&] { read<QByteArray>(stream); });
        return {};
    case QMetaType::QBitArray:
        skipBitArray(stream);
        return {};
    case QMetaType::QEasingCurve:
        skipEasingCurve(stream);
        return {};
    case QMetaType::QDateTime:
        return readDateTime(stream);
    case QMetaType::QJsonValue:
        return readJsonValue(stream);
    case QMetaType::QJsonObject:
    case QMetaType::QJsonArray:
    case QMetaType::QJsonDocument:
    case QMetaType::QCborArray:
    case QMetaType::QCborMap:
        read<QByteArray>(stream);
        return {};
    case QMetaType::QCborValue:
        return readCborValue(stream);
    default:
        if (std::find(std::begin(plainTypes), std::end(plainTypes), type) == std::end(plainTypes) ||
            !QMetaType::isRegistered(type)) // a QMetaType of another prints a warning
            break;
        const QMetaType metaType(type);
        QVariant value(metaType);
        if (metaType.load(stream, value.data()))
            return value;
    }
    stream.setStatus(QDataStream::ReadCorruptData);
    return {};
}

} // namespace

QMap<QString, QVariant> readVariantMap(QDataStream &stream)
{
    const QDataStream::Status before = stream.status();
    if (!stream.isDeviceTransactionStarted())
        stream.resetStatus();
    QMap<QString, QVariant> values;
    readItems(stream, readCount(stream), [&] {
        const auto key = read<QString>(stream);
        values.insert(key, readValue(stream, 0));
    });
    if (stream.status() != QDataStream::Ok)
        values.clear();
    if (before != QDataStream::Ok && !stream.isDeviceTransactionStarted()) {
        stream.resetStatus();
        stream.setStatus(before);
    }
    return values;
}

} // namespace KOV::SDK
